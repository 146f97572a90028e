// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <string_view>

#include <json/value.h>

#include "cloud/Catalogue.h"
#include "cloud/ReplyScript.h"

namespace Cloud {

/// Limits for the body of a request and of an answer. docs/cloud.md describes both.
inline constexpr std::size_t kRequestBytes = 64UL * 1024;
inline constexpr std::size_t kAnswerBytes = 4UL * 1024 * 1024;

enum class Status : int { kGood = 0, kNothing = 44, kBadMember = 45, kQuotaUsedUp = 227 };

struct CloudAnswer {
    unsigned httpStatus = 200;
    std::string body;
    std::chrono::milliseconds delay{};  ///< delay before the answer is sent
};

bool IsOperation(std::string_view name);

/// Answers requests from a catalogue. Independent of connections. For one thread.
class CloudService {
public:
    explicit CloudService(Catalogue& catalogue, ReplyScript script = {});

    /// The answer to a request's body. Invalid bodies have an answer too.
    CloudAnswer Answer(std::string_view body);

private:
    friend struct Operations;

    Status TakeDownload(const std::string& identity);

    Catalogue& m_catalogue;
    ReplyScript m_script;
    /// Downloads of each identity since the start.
    std::map<std::string, std::int64_t, std::less<>> m_downloads;
};

}  // namespace Cloud
