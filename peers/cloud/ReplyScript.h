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

namespace Cloud {

/// How one answer differs from the normal answer. Without any member set it does not differ.
struct ScriptedReply {
    std::optional<unsigned> http;       ///< HTTP status; the answer is then empty
    std::chrono::milliseconds delay{};  ///< delay before the answer
    bool quota = false;                 ///< answers as if the identity's quota were used up
};

/// Makes the cloud answer differently than it normally does.
///
///     {"replies": [{"operation": "codeset", "http": 503, "times": 1, "delayMs": 20, "quota":
///     true}]}
///
/// A request gets the first entry for its operation that is not used up. An entry without `times`
/// is never used up.
class ReplyScript {
public:
    /// False, with the reason in `why`, if the text is invalid; the script is then unchanged.
    bool Load(std::string_view text, std::string& why);

    /// The entry for a request of this operation. Uses up one of its times.
    ScriptedReply Take(std::string_view operation);

private:
    using Entry = Peers::ScriptedEntry<std::string, ScriptedReply>;

    static std::optional<Entry> ParseEntry(const Json::Value& value, std::string& why);

    std::vector<Entry> m_entries;
};

}  // namespace Cloud
