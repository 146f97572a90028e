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

namespace Cloud {

/// How one answer differs from the normal one. Nothing set: not at all.
struct ScriptedReply {
    std::optional<unsigned> http;       ///< in place of the answer, which is then empty
    std::chrono::milliseconds delay{};  ///< before the answer
    bool quota = false;                 ///< as if the identity's quota were used up
};

/// Tells the cloud to answer otherwise than it would.
///
///     {"replies": [{"operation": "codeset", "http": 503, "times": 1, "delayMs": 20, "quota":
///     true}]}
///
/// For a request the first entry of its operation counts that is not used up; without `times` it is
/// never used up.
class ReplyScript {
public:
    /// False, with the reason in `why`, leaves the script as it was.
    bool Load(std::string_view text, std::string& why);

    /// What is to be done with a request of this operation; uses up one time.
    ScriptedReply Take(std::string_view operation);

private:
    struct Entry {
        std::string operation;
        std::uint32_t times = kForever;
        ScriptedReply reply;
    };

    static constexpr std::uint32_t kForever = std::numeric_limits<std::uint32_t>::max();

    static std::optional<Entry> ParseEntry(const Json::Value& value, std::string& why);

    std::vector<Entry> m_entries;
};

}  // namespace Cloud
