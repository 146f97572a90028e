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

/// How long the service may take to accept the connection, and for an answer; a guided lookup in
/// the cloud takes up to 55 s.
inline constexpr std::chrono::milliseconds kConnectTimeout{3000};
inline constexpr std::chrono::milliseconds kAnswerTimeout{120000};

/// One command from the connection to its end. On one task.
class Session {
public:
    struct Output {
        std::function<void(const std::string&)> line;
        std::function<void(const std::string&)> complaint;
        /// A session that stays is connected: lines may come.
        std::function<void()> ready;
        /// The last call, once, with the program's exit code.
        std::function<void(int)> end;
    };

    Session(NotifyTargetTaskIF* task, Command command, Output output);

    void Start();

    /// A line of input, and its end: the session ends once all that it asked is answered.
    void Line(const std::string& text);
    void InputEnded();

    /// Ends with 0; a key that is held is let go first.
    void Interrupt();

private:
    /// Whether it ends only with its input, its connection or a signal.
    bool Stays() const;

    void Opened();
    void Unreachable();
    void Lost();
    void Event(const IPCMessageEnvelope& envelope);

    /// Begins to relay, unless it is behind a relay itself.
    void OpenToOthers();
    void Hold();
    /// Lets the key go, over a new connection where the first has gone.
    void HoldEnded();
    void LetGo();
    void Ask(const ToService& question);
    void Tell(const ToService& message);
    void Answer(const IPCMessageEnvelope& reply);
    /// No further question follows: ends with the last answer, or once timeout has run out.
    void AskedAll();
    void EndIfAnswered();
    /// Once; the connection is closed behind all that was sent.
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
