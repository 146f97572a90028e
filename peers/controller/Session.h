// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <chrono>
#include <cstddef>
#include <functional>
#include <memory>
#include <string>

#include "controller/Command.h"
#include "controller/Relay.h"
#include "controller/ServiceLink.h"
#include "orlu/Timer.h"

namespace Controller {

/// Limits for the connection to the service and for an answer. A guided lookup in the cloud takes
/// up to 55 s.
inline constexpr std::chrono::milliseconds kConnectTimeout{3000};
inline constexpr std::chrono::milliseconds kAnswerTimeout{120000};

/// Executes one command, from the connection to the end of the program. On one task.
class Session {
public:
    struct Output {
        std::function<void(const std::string&)> line;
        std::function<void(const std::string&)> complaint;
        /// A session of `kWatch` or `kLines` is connected: lines may come.
        std::function<void()> ready;
        /// Called last and once, with the program's exit code.
        std::function<void(int)> end;
    };

    Session(NotifyTargetTaskIF* task, Command command, Output output);

    void Start();

    /// A line of input; the end of input. After the end the session waits for all answers and ends.
    void Line(const std::string& text);
    void InputEnded();

    /// Ends with 0. A held key is released first.
    void Interrupt();

private:
    /// Whether the session ends only with its input, its connection or a signal.
    bool Stays() const;

    void Opened();
    void Unreachable();
    void Lost();
    void Event(const IPCMessageEnvelope& envelope);

    /// Starts the relay, unless this session uses a relay itself.
    void OpenToOthers();
    void Hold();
    /// Releases the key, on a new connection if the first was lost.
    void HoldEnded();
    void ReleaseKey();
    void Ask(const ToService& question);
    void Tell(const ToService& message);
    void Answer(const IPCMessageEnvelope& reply);
    /// No further question follows: ends with the last answer or after `kAnswerTimeout`.
    void AskedAll();
    void EndIfAnswered();
    /// Ends once. The connection is closed after all messages have been sent.
    void End(int code);

    NotifyTargetTaskIF* m_task;
    Command m_command;
    Output m_output;
    ServiceLink m_link;
    std::unique_ptr<Relay> m_relay;
    std::shared_ptr<APTimer> m_holdTimer;
    std::shared_ptr<APTimer> m_answerTimer;
    std::size_t m_unanswered = 0;
    std::size_t m_lineNumber = 0;
    bool m_holding = false;
    bool m_askedAll = false;
    bool m_ended = false;
};

}  // namespace Controller
