// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <functional>
#include <memory>
#include <string>

namespace PorticoApi {

/// What a consumer or a service gets for its request.
struct Answer {
    unsigned status = 200;
    std::string body = "{}";  ///< JSON: the answer, or with any other status a `Portico::Error`.
    std::string allow;        ///< With 405: the methods that there are.
};

/// An error with the status as its code.
Answer Failure(unsigned status, const std::string& message);

/// 400 for a body that is no such message, code 0 and subcode 2005.
Answer BadBody(const std::string& why);

/// The error that a service answered with: 400 for subcode 2005, else the error's code if that is
/// a status, else 500.
Answer ServiceFailure(const std::string& json);

/// The way back of one request. Whoever serves it calls `Give` once, at any time; a second call
/// does nothing.
class Reply {
public:
    explicit Reply(std::function<void(Answer)> give) : m_give(std::move(give)) {}
    Reply(const Reply&) = delete;
    Reply& operator=(const Reply&) = delete;

    void Give(Answer answer);

    /// The asker has gone: `dropped` of the one who serves is called, unless it has answered.
    void Drop();
    void OnDrop(std::function<void()> dropped) { m_dropped = std::move(dropped); }

private:
    std::function<void(Answer)> m_give;
    std::function<void()> m_dropped;
};

using ReplyPtr = std::shared_ptr<Reply>;

}  // namespace PorticoApi
