// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <string>

#include "console/Signals.h"
#include "orlu/IPCFrames.h"

namespace OrluConsole {

/// The connection to a service's command line. Opened with the first question, and again if the
/// service has closed it since.
class ServiceConnection {
public:
    enum class Outcome {
        kAnswered,
        kUnreachable,  ///< No connection, or lost before the answer; see `Reason`.
        kInterrupted,  ///< A signal ended the wait.
    };

    /// `path` is that of the service's socket.
    ServiceConnection(std::string path, Signals& signals);
    ~ServiceConnection();
    ServiceConnection(const ServiceConnection&) = delete;
    ServiceConnection& operator=(const ServiceConnection&) = delete;

    /// Sends a request and waits for its answer without a limit, since a command may take any time.
    Outcome Ask(std::uint32_t id, const google::protobuf::Message& question,
                google::protobuf::Message& answer);

    const std::string& Reason() const { return m_reason; }

private:
    bool Open();
    void Close();
    bool Fail(const std::string& reason);
    bool FailWithError();
    bool Send(const std::string& bytes);
    /// Reads the received bytes. False if the service has closed the connection.
    bool Receive();
    Outcome AwaitReply(std::uint32_t token, google::protobuf::Message& answer);

    std::string m_path;
    Signals& m_signals;
    int m_fd = -1;
    std::uint32_t m_token = 0;
    IPCFrames::Reader m_reader;
    std::string m_received;
    std::string m_reason;
};

}  // namespace OrluConsole
