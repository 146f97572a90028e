// SPDX-License-Identifier: Apache-2.0

#include "console/CLIClient.h"

#include <cstdint>
#include <map>
#include <utility>

#include "console/Console.pb.h"
#include "orlu/DPrint.h"
#include "orlu/IPCMessageRouter.h"
#include "orlu/Limits.h"
#include "orlu/Network.h"

using namespace OrluConsole;

namespace {

constexpr DPrint kLog("CLIClient");

/// The first `words` words, joined by blanks.
std::string Join(const Line& line, int words)
{
    std::string text;
    for (int word = 0; word < words; ++word) {
        text.append(word == 0 ? "" : " ").append(line.word(word));
    }
    return text;
}

/// The reason to refuse a line; empty if it is accepted.
const char* RefusalOf(const Line& line)
{
    if (line.word_size() == 0) {
        return "No command";
    }
    if (static_cast<std::size_t>(line.word_size()) > Orlu::Limits::kConsoleWords) {
        return "Too many words";
    }
    std::size_t size = static_cast<std::size_t>(line.word_size()) - 1;
    for (const auto& word : line.word()) {
        size += word.size();
    }
    return size > Orlu::Limits::kConsoleLineBytes ? "Line too long" : "";
}

/// Cuts an answer that is too long for a frame, after its last whole line if it has one, and says
/// so at its end.
void Fit(std::string& answer)
{
    if (answer.size() <= Orlu::Limits::kConsoleAnswerBytes) {
        return;
    }
    const std::size_t size = answer.size();
    const std::size_t line = answer.rfind('\n', Orlu::Limits::kConsoleAnswerBytes - 1);
    answer.resize(line == std::string::npos ? Orlu::Limits::kConsoleAnswerBytes : line + 1);
    answer += "(cut: " + std::to_string(size - answer.size()) + " bytes more)\n";
}

}  // namespace

class CLIClient::Server {
public:
    explicit Server(std::string name) : m_name(std::move(name)) {}

    void Serve(NotifyTargetTaskIF* task, Descriptors descriptors, Handler handler)
    {
        m_task = task;
        m_descriptors = std::move(descriptors);
        m_handler = std::move(handler);
        m_listener = IL::CreateServerListener(m_name, task);
        const AsyncCallback<Orlu::SocketPtr> accepted(
            [this](const Orlu::SocketPtr& socket) { Accept(socket); }, task);
        if (!m_listener->Serve(IPCDirectory::Get().Lookup(m_name), accepted)) {
            kLog.Log(1, "{}: no console can reach this service", m_name);
        }
    }

private:
    void Accept(const Orlu::SocketPtr& socket)
    {
        const std::uint64_t console = ++m_lastConsole;
        const auto router = IPCMessageRouterFactory::CreateRouter(m_name, m_task, nullptr);
        // The map holds the router: nothing else keeps it while the console is connected.
        m_consoles[console] = router;
        router->AddHandler<Describe>(
            CONSOLE_DESCRIBE, [this, asker = router.get()](const Describe&, std::uint32_t token) {
                asker->ReplyMessage(CONSOLE_DESCRIBE, DescribeCommands(), token);
            });
        router->AddHandler<Line>(
            CONSOLE_LINE, [this, asker = router.get()](const Line& line, std::uint32_t token) {
                Answer answer = Execute(line);
                // An answer that is too long could not be sent at all, and the console would wait
                // for ever.
                Fit(*answer.mutable_response());
                asker->ReplyMessage(CONSOLE_LINE, answer, token);
            });
        router->Connect(socket, [this, console] { Leave(console); });
    }

    void Leave(std::uint64_t console)
    {
        // Destroyed later: the router is the caller of this function.
        m_task->QueueNotificationNonBlocking([router = m_consoles.extract(console).mapped()] {});
    }

    Commands DescribeCommands() const
    {
        Commands commands;
        for (const auto& descriptor : m_descriptors) {
            auto& command = *commands.add_command();
            command.set_command(descriptor->command);
            command.set_help(descriptor->help);
            command.set_heading(descriptor->heading);
        }
        return commands;
    }

    Answer Execute(const Line& line) const
    {
        Answer answer;
        if (const std::string refusal = RefusalOf(line); !refusal.empty()) {
            answer.set_state(Answer::REFUSED);
            answer.set_response(refusal);
            return answer;
        }
        const int words = CommandWords(line);
        const std::list<std::string> arguments(line.word().begin() + words, line.word().end());
        const int known = m_handler(Join(line, words), arguments, *answer.mutable_response());
        answer.set_state(known == 0 ? Answer::UNKNOWN : Answer::KNOWN);
        return answer;
    }

    /// The number of words that form the command; the longest match counts.
    int CommandWords(const Line& line) const
    {
        for (int words = line.word_size(); words > 0; --words) {
            const std::string command = Join(line, words);
            for (const auto& descriptor : m_descriptors) {
                if (descriptor->command == command) {
                    return words;
                }
            }
        }
        return line.word_size();
    }

    const std::string m_name;
    NotifyTargetTaskIF* m_task = nullptr;
    Descriptors m_descriptors;
    Handler m_handler;
    std::shared_ptr<APServerSocketListenerIF> m_listener;
    std::map<std::uint64_t, IPCMessageRouterPtr> m_consoles;
    std::uint64_t m_lastConsole = 0;
};

CLIClient::CLIClient(std::string name) : m_server(std::make_shared<Server>(std::move(name))) {}

CLIClient::~CLIClient() = default;

void CLIClient::Initialize(NotifyTargetTaskIF* task, Descriptors descriptors, Handler handler)
{
    IL::BreakThread([server = m_server, task, descriptors = std::move(descriptors),
                     handler = std::move(handler)] { server->Serve(task, descriptors, handler); },
                    task);
}
