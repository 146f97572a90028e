// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <functional>
#include <memory>
#include <string>

namespace PorticoApi {

/// The answer to a request of a consumer or a service.
struct Answer {
    unsigned status = 200;
    std::string body = "{}";  ///< JSON; with any other status a `Portico::Error`.
    std::string allow;        ///< With 405: the methods of the resource.
};

/// An error with the status as its code.
Answer Failure(unsigned status, const std::string& message);

/// 400 with code 0 and subcode 2005, for a body that is not the expected message.
Answer BadBody(const std::string& why);

/// The error that a service answered with. The status is 400 for subcode 2005, else the error's
/// code if that is an HTTP status, else 500.
Answer ServiceFailure(const std::string& json);

/// Returns the answer of one request. The handler calls `Give` once, at any time; a second call has
/// no effect.
class Reply {
public:
    explicit Reply(std::function<void(Answer)> give) : m_give(std::move(give)) {}
    Reply(const Reply&) = delete;
    Reply& operator=(const Reply&) = delete;

    void Give(Answer answer);

    /// Called when the consumer has closed its connection. Calls the handler's `dropped`, unless
    /// the handler has answered.
    void Drop();
    void OnDrop(std::function<void()> dropped) { m_dropped = std::move(dropped); }

private:
    std::function<void(Answer)> m_give;
    std::function<void()> m_dropped;
};

using ReplyPtr = std::shared_ptr<Reply>;

}  // namespace PorticoApi
