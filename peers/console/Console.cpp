// SPDX-License-Identifier: Apache-2.0

#include "console/Console.h"

#include <cstdio>

#include "console/ConsoleText.h"
#include "orlu/Limits.h"

namespace OrluConsole {

namespace {

constexpr std::string_view kHelp = "help";
constexpr std::string_view kFamily = "trs ";

ExitCode Refuse(const char* reason)
{
    std::fprintf(stderr, "OrluConsole: %s\n", reason);
    return kRefused;
}

/// Why the words cannot be sent as a line; null if they can.
const char* RefusalOf(const std::vector<std::string>& words)
{
    std::size_t size = 0;
    for (const std::string& word : words) {
        size += word.size() + 1;
    }
    if (words.size() > Orlu::Limits::kConsoleWords) {
        return "a line has at most 16 words";
    }
    return size > Orlu::Limits::kConsoleLineBytes + 1 ? "a line has at most 4096 bytes" : nullptr;
}

std::string Join(const std::vector<std::string>& words, std::size_t first)
{
    std::string text;
    for (std::size_t word = first; word < words.size(); ++word) {
        text.append(word == first ? "" : " ").append(words[word]);
    }
    return text;
}

}  // namespace

ExitCode Console::Execute(const std::vector<std::string>& words)
{
    if (const char* refusal = RefusalOf(words); refusal != nullptr) {
        return Refuse(refusal);
    }
    return words.front() == kHelp ? Help(Join(words, 1)) : Send(words);
}

ExitCode Console::ExecuteAll(InputIF& input)
{
    ExitCode code = kKnown;
    while (!m_interrupted) {
        const InputIF::Input next = input.Read();
        m_interrupted = next.kind == InputIF::Kind::kInterrupted;
        if (m_interrupted || next.kind == InputIF::Kind::kEnd) {
            break;
        }
        if (next.kind == InputIF::Kind::kTooLong) {
            code = Refuse("a line has at most 4096 bytes");
            continue;
        }
        const auto words = SplitWords(next.line);
        if (!words) {
            code = Refuse("a quote does not end");
            continue;
        }
        if (words->size() == 1 && (words->front() == "exit" || words->front() == "quit")) {
            break;
        }
        if (!words->empty()) {
            code = Execute(*words);
        }
    }
    return m_interrupted ? kKnown : code;
}

std::vector<std::string> Console::Complete(std::string_view text)
{
    std::vector<std::string> completions;
    const std::string asked = text.starts_with("help ") ? "help " : "";
    FetchCommands();
    for (const auto& command : m_commands.command()) {
        if (std::string whole = asked + command.command(); whole.starts_with(text)) {
            completions.push_back(std::move(whole));
        }
    }
    for (const char* own : {"exit", "help "}) {
        if (asked.empty() && std::string_view(own).starts_with(text)) {
            completions.emplace_back(own);
        }
    }
    return completions;
}

ExitCode Console::Send(const std::vector<std::string>& words)
{
    Line line;
    for (const std::string& word : words) {
        line.add_word(word);
    }
    Answer answer;
    const auto outcome = m_service.Ask(CONSOLE_LINE, line, answer);
    if (outcome != ServiceConnection::Outcome::kAnswered) {
        return Failed(outcome);
    }
    if (answer.state() == Answer::REFUSED) {
        return Refuse(Printable(answer.response()).c_str());
    }
    Print(answer.response());
    return answer.state() == Answer::KNOWN ? kKnown : kUnknown;
}

ExitCode Console::Help(std::string command)
{
    const auto outcome = FetchCommands();
    if (outcome != ServiceConnection::Outcome::kAnswered) {
        return Failed(outcome);
    }
    if (command.empty()) {
        std::string text;
        for (const auto& each : m_commands.command()) {
            text += each.command() + "\n";
        }
        Print(text + "help COMMAND tells more of one; exit leaves.");
        return kKnown;
    }
    // All commands belong to one family, whose name may be left out.
    if (!command.starts_with(kFamily)) {
        command.insert(0, kFamily);
    }
    for (const auto& each : m_commands.command()) {
        if (each.command() == command) {
            const std::string heading = m_colour ? "\033[1m" + Printable(each.heading()) + "\033[0m"
                                                 : Printable(each.heading());
            std::fputs(heading.c_str(), stdout);
            Print(each.help());
            return kKnown;
        }
    }
    std::fprintf(stderr, "OrluConsole: there is no command %s\n", Printable(command).c_str());
    return kUnknown;
}

ServiceConnection::Outcome Console::FetchCommands()
{
    // An empty table means that no fetch has succeeded yet.
    return m_commands.command().empty() ? m_service.Ask(CONSOLE_DESCRIBE, Describe(), m_commands)
                                        : ServiceConnection::Outcome::kAnswered;
}

ExitCode Console::Failed(ServiceConnection::Outcome outcome)
{
    if (outcome == ServiceConnection::Outcome::kInterrupted) {
        m_interrupted = true;
        return kKnown;
    }
    std::fprintf(stderr, "OrluConsole: TrellanService can't be reached: %s\n",
                 m_service.Reason().c_str());
    return kUnreachable;
}

void Console::Print(const std::string& text) const
{
    const std::string printable = Printable(text);
    std::fputs(printable.c_str(), stdout);
    if (!printable.ends_with('\n')) {
        std::fputc('\n', stdout);
    }
    std::fflush(stdout);
}

}  // namespace OrluConsole
