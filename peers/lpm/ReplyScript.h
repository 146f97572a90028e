// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <chrono>
#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <json/value.h>

namespace Lpm {

/// How one answer differs from the normal one. Nothing set: not at all.
struct ScriptedReply {
    std::optional<std::uint8_t> status;      ///< in place of the reply's own
    std::chrono::milliseconds delay{};       ///< before the blaster's answer
    bool silent = false;                     ///< the blaster's answer is lost
    std::optional<std::int32_t> bulkResult;  ///< of the transfer of a store frame
    std::optional<std::string> raw;          ///< the whole reply

    /// Whether the blaster takes the frame: a status with one of its low three bits refuses it. The
    /// end key is always taken, so that nothing is left sending.
    bool IsTaken(std::uint8_t command) const;

    /// The reply to send in place of `normal`.
    std::string Reply(std::string normal) const;
};

/// Tells the blaster to answer otherwise than it would.
///
///     {"replies": [{"command": "0x22", "status": 7, "times": 1, "delayMs": 20,
///                   "silent": false, "bulkResult": -1, "raw": "0107"}]}
///
/// For a frame the first entry of its command counts that is not used up; without `times` it is
/// never used up. A store frame whose `bulkResult` is not 0 does not reach the blaster.
class ReplyScript {
public:
    /// Replaces the script by a text of the form above. False, with the reason in `why`, leaves it
    /// as it was.
    bool Load(std::string_view text, std::string& why);

    /// The same from the array alone.
    bool Replace(const Json::Value& replies, std::string& why);

    /// What is to be done with a frame of this command; uses up one time.
    ScriptedReply Take(std::uint8_t command);

private:
    struct Entry {
        std::uint8_t command = 0;
        std::uint32_t times = kForever;
        ScriptedReply reply;
    };

    static constexpr std::uint32_t kForever = std::numeric_limits<std::uint32_t>::max();

    static std::optional<Entry> ParseEntry(const Json::Value& value, std::string& why);

    std::vector<Entry> m_entries;
};

}  // namespace Lpm
