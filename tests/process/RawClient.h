// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>
#include <string_view>

#include "orlu/IPCMessageEnvelope.pb.h"
#include "process/Program.h"

namespace ProcessTests {

/// A connection as any program could make it: bytes on the socket of a service of that name.
class RawClient {
public:
    RawClient(const TemporaryRoot& folder, const std::string& service);
    ~RawClient();
    RawClient(const RawClient&) = delete;
    RawClient& operator=(const RawClient&) = delete;

    void Send(std::string_view bytes) const;

    /// A frame with the message in it; a request if `token` is above 0.
    void Send(std::uint32_t id, std::uint32_t token,
              const google::protobuf::Message& message) const;

    /// Waits for a whole frame, of less than 64 KiB; an empty envelope if none comes.
    IPCMessageEnvelope Receive() const;

    /// Waits until the service has closed the connection.
    void WaitForClose() const;

private:
    int m_fd;
};

}  // namespace ProcessTests
