// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <json/value.h>

#include "common/ScriptedReplies.h"

namespace Lpm {

/// How one answer differs from the normal answer. Without any member set it does not differ.
struct ScriptedReply {
    std::optional<std::uint8_t> status;      ///< replaces the reply's status
    std::chrono::milliseconds delay{};       ///< delay of the blaster's answer
    bool silent = false;                     ///< the blaster's answer is not sent
    std::optional<std::int32_t> bulkResult;  ///< result of the transfer of a store frame
    std::optional<std::string> raw;          ///< replaces the whole reply

    /// Whether the blaster executes the frame. A status with one of its low three bits refuses it.
    /// The end key is always executed, so that no key is sent for ever.
    bool IsTaken(std::uint8_t command) const;

    /// The reply to send in place of `normal`.
    std::string Reply(std::string normal) const;
};

/// Makes the blaster answer differently than it normally does.
///
///     {"replies": [{"command": "0x22", "status": 7, "times": 1, "delayMs": 20,
///                   "silent": false, "bulkResult": -1, "raw": "0107"}]}
///
/// A frame gets the first entry for its command that is not used up. An entry without `times` is
/// never used up. A store frame whose `bulkResult` is not 0 does not reach the blaster.
class ReplyScript {
public:
    /// Replaces the script by a text of the form above. False, with the reason in `why`, if the
    /// text is invalid; the script is then unchanged.
    bool Load(std::string_view text, std::string& why);

    /// The same with the array of replies.
    bool Replace(const Json::Value& replies, std::string& why);

    /// The entry for a frame of this command. Uses up one of its times.
    ScriptedReply Take(std::uint8_t command);

private:
    using Entry = Peers::ScriptedEntry<std::uint8_t, ScriptedReply>;

    static std::optional<Entry> ParseEntry(const Json::Value& value, std::string& why);

    std::vector<Entry> m_entries;
};

}  // namespace Lpm
