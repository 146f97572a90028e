// SPDX-License-Identifier: Apache-2.0

#include "controller/Session.h"

#include <utility>

#include "ProtoBufs/Trellan_Service.pb.h"

using TrellanServiceMessages::OrluKeyReqMessage_t;

namespace Controller {

Session::Session(NotifyTargetTaskIF* task, Command command, Output output)
    : m_task(task),
      m_command(std::move(command)),
      m_output(std::move(output)),
      m_link(task, {.opened = [this] { Opened(); },
                    .unreachable = [this] { Unreachable(); },
                    .lost = [this] { Lost(); },
                    .event =
                        [this](const IPCMessageEnvelope& event) {
                            Event(event);
                        }}),
      m_holdTimer(APTimer::Create(task, "ProductController hold")),
      m_answerTimer(APTimer::Create(task, "ProductController answer"))
{
}

void Session::Start()
{
    m_link.Open(kConnectTimeout);
}

bool Session::Stays() const
{
    return m_command.mode == Mode::kWatch || m_command.mode == Mode::kLines;
}

void Session::Opened()
{
    switch (m_command.mode) {
        case Mode::kWatch:
        case Mode::kLines:
            OpenToOthers();
            m_output.ready();
            break;
        case Mode::kAsk:
            Ask(m_command.message);
            AskedAll();
            break;
        case Mode::kTell:
            Tell(m_command.message);
            m_output.line(R"({"sent": true})");
            AskedAll();
            break;
        case Mode::kHold:
            m_holding ? HoldEnded() : Hold();
            break;
        case Mode::kServe:
            break;
    }
}

void Session::Unreachable()
{
    m_output.complaint("TrellanService does not answer; is it running?");
    End(kUnreachable);
}

void Session::Lost()
{
    if (m_holding) {
        // The blaster goes on sending, so HoldEnded releases the key on a new connection.
        m_output.complaint("the connection was closed while the key was held");
        // Answers of the lost connection will not come.
        m_unanswered = 0;
    } else if (Stays()) {
        m_output.complaint(
            "TrellanService closed the connection: it ended, or took another client");
        End(kUnreachable);
    } else {
        m_output.complaint("the connection was closed before the answer");
        End(kNoAnswer);
    }
}

void Session::Event(const IPCMessageEnvelope& envelope)
{
    if (Stays()) {
        m_output.line(EnvelopeLine(envelope));
    }
    if (m_relay) {
        m_relay->Event(envelope);
    }
}

void Session::OpenToOthers()
{
    // Behind a relay there is one already, which other controllers find.
    if (m_link.IsRelayed()) {
        return;
    }
    m_relay =
        std::make_unique<Relay>(m_task, m_link.Router(), [this](const IPCMessageEnvelope& answer) {
            if (m_command.mode == Mode::kWatch) {
                m_output.line(EnvelopeLine(answer));
            }
        });
    if (!m_relay->Serve()) {
        m_relay.reset();
        m_output.complaint(
            "other controllers will replace this one: no socket to let them through");
    }
}

void Session::Line(const std::string& text)
{
    ++m_lineNumber;
    if (m_ended || text.find_first_not_of(" \t\r") == std::string::npos) {
        return;
    }
    std::string complaint;
    const auto message = ReadLine(text, complaint);
    if (!message) {
        m_output.complaint("line " + std::to_string(m_lineNumber) + ": " + complaint);
    } else if (FindKind(message->id)->direction == Direction::kRequest) {
        Ask(*message);
    } else {
        Tell(*message);
    }
}

void Session::InputEnded()
{
    AskedAll();
}

void Session::Hold()
{
    Ask(m_command.message);
    m_holding = true;
    m_holdTimer->SetTimeouts(static_cast<std::uint32_t>(m_command.hold.count()), 0);
    m_holdTimer->Start([this] { HoldEnded(); });
}

void Session::HoldEnded()
{
    if (!m_link.Router()->IsConnected()) {
        m_link.Open(kConnectTimeout);
        return;
    }
    ReleaseKey();
    AskedAll();
}

void Session::ReleaseKey()
{
    m_holding = false;
    OrluKeyReqMessage_t end;
    end.CopyFrom(*m_command.message.message);
    end.set_keyaction(OrluKeyReqMessage_t::KEY_ACTION_END_PRESS);
    Ask({m_command.message.id, std::make_shared<OrluKeyReqMessage_t>(end)});
}

void Session::Ask(const ToService& question)
{
    IPCMessageEnvelope envelope;
    SetPayload(envelope, *question.message);
    ++m_unanswered;
    m_link.Router()->SendRequest(question.id, std::move(envelope),
                                 [this](const IPCMessageEnvelope& reply) { Answer(reply); });
}

void Session::Tell(const ToService& message)
{
    m_link.Router()->SendMessage(message.id, *message.message);
}

void Session::Answer(const IPCMessageEnvelope& reply)
{
    --m_unanswered;
    if (Stays()) {
        m_output.line(EnvelopeLine(reply));
    } else if (const auto message = MessageLine(reply)) {
        m_output.line(*message);
    } else {
        m_output.complaint("the answer is not the message of its id");
        End(kNoAnswer);
        return;
    }
    EndIfAnswered();
}

void Session::AskedAll()
{
    // The time counts from here and not from the first question: lines may come for hours.
    m_askedAll = true;
    m_answerTimer->SetTimeouts(static_cast<std::uint32_t>(kAnswerTimeout.count()), 0);
    m_answerTimer->Start([this] {
        m_output.complaint("no answer within " +
                           std::to_string(kAnswerTimeout / std::chrono::seconds(1)) + " seconds");
        End(kNoAnswer);
    });
    EndIfAnswered();
}

void Session::EndIfAnswered()
{
    if (m_askedAll && m_unanswered == 0) {
        End(kAnswered);
    }
}

void Session::Interrupt()
{
    if (m_holding && !m_ended) {
        m_holdTimer->Stop();
        HoldEnded();
        if (m_holding) {
            // Without a connection: `Opened` releases the key and ends the session.
            return;
        }
    }
    End(kAnswered);
}

void Session::End(int code)
{
    if (std::exchange(m_ended, true)) {
        return;
    }
    m_holdTimer->Stop();
    m_answerTimer->Stop();
    // After the sockets have written in this wake-up: closing now would drop the last message.
    m_task->Queue()->AtEndOfWakeUp([this, code] {
        m_relay.reset();
        m_link.Close();
        m_output.end(code);
    });
}

}  // namespace Controller
