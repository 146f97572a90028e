// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <string>

#include "console/Signals.h"
#include "orlu/IPCFrames.h"

namespace OrluConsole {

/// The way to a service's command line. Opens at the first question, and anew where the service
/// has gone since the last.
class ServiceConnection {
public:
    enum class Outcome {
        kAnswered,
        kUnreachable,  ///< Nobody there, or gone before the answer; `Reason` says which.
        kInterrupted,  ///< A signal ended the wait.
    };

    /// `path` of the service's socket.
    ServiceConnection(std::string path, Signals& signals);
    ~ServiceConnection();
    ServiceConnection(const ServiceConnection&) = delete;
    ServiceConnection& operator=(const ServiceConnection&) = delete;

    /// Sends a request and waits for its answer, without limit: so do the service's commands.
    Outcome Ask(std::uint32_t id, const google::protobuf::Message& question,
                google::protobuf::Message& answer);

    const std::string& Reason() const { return m_reason; }

private:
    bool Open();
    void Close();
    bool Fail(const std::string& reason);
    bool FailWithError();
    bool Send(const std::string& bytes);
    /// Reads what is there. False once the service has closed.
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
