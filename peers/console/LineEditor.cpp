// SPDX-License-Identifier: Apache-2.0

#include "console/LineEditor.h"

#include <algorithm>
#include <cstdio>
#include <cwchar>
#include <filesystem>
#include <system_error>
#include <utility>

#include <sys/stat.h>
#include <unistd.h>

#include "orlu/Limits.h"

namespace OrluConsole {

namespace {

constexpr int kHistoryLines = 1000;
/// The editor does not count the characters between two of these as columns: colour codes have no
/// width.
constexpr wchar_t kEscape = L'\1';

/// The longest common prefix.
std::string CommonBeginning(const std::vector<std::string>& texts)
{
    std::string common = texts.front();
    for (const std::string& text : texts) {
        const auto [end, ignored] =
            std::mismatch(common.begin(), common.end(), text.begin(), text.end());
        common.erase(end, common.end());
    }
    return common;
}

}  // namespace

LineEditor::LineEditor(Signals& signals, std::string historyPath, bool colour,
                       Completions completions)
    : m_signals(signals),
      m_historyPath(std::move(historyPath)),
      m_prompt(colour ? L"\1\033[1m\1orlu>\1\033[0m\1 " : L"orlu> "),
      m_completions(std::move(completions)),
      m_history(history_init()),
      m_editor(el_init("OrluConsole", stdin, stdout, stderr))
{
    HistEvent event;
    history(m_history, &event, H_SETSIZE, kHistoryLines);
    history(m_history, &event, H_SETUNIQUE, 1);
    LoadHistory();
    el_set(m_editor, EL_CLIENTDATA, this);
    el_wset(m_editor, EL_PROMPT_ESC, &LineEditor::Prompt, kEscape);
    el_set(m_editor, EL_GETCFN, &LineEditor::GetCharacter);
    el_set(m_editor, EL_HIST, history, m_history);
    el_set(m_editor, EL_EDITOR, "emacs");
    el_set(m_editor, EL_ADDFN, "orlu-complete", "Complete a command", &LineEditor::Complete);
    el_set(m_editor, EL_BIND, "^I", "orlu-complete", nullptr);
    el_set(m_editor, EL_BIND, "^R", "em-inc-search-prev", nullptr);
    el_set(m_editor, EL_SIGNAL, 1);
}

LineEditor::~LineEditor()
{
    el_end(m_editor);
    history_end(m_history);
}

LineEditor& LineEditor::Of(EditLine* editor)
{
    void* self = nullptr;
    el_get(editor, EL_CLIENTDATA, &self);
    return *static_cast<LineEditor*>(self);
}

wchar_t* LineEditor::Prompt(EditLine* editor)
{
    return Of(editor).m_prompt.data();
}

int LineEditor::GetCharacter(EditLine* editor, wchar_t* character)
{
    return Of(editor).NextCharacter(*character);
}

unsigned char LineEditor::Complete(EditLine* editor, int /*character*/)
{
    return Of(editor).CompleteLine();
}

InputIF::Input LineEditor::Read()
{
    int size = 0;
    const char* text = el_gets(m_editor, &size);
    if (text == nullptr || size <= 0) {
        std::fputc('\n', stdout);
        return {m_interrupted ? Kind::kInterrupted : Kind::kEnd};
    }
    std::string line(text, static_cast<std::size_t>(size));
    if (line.ends_with('\n')) {
        line.pop_back();
    }
    if (line.size() > Orlu::Limits::kConsoleLineBytes) {
        return {Kind::kTooLong};
    }
    if (line.find_first_not_of(" \t") != std::string::npos) {
        HistEvent event;
        history(m_history, &event, H_ENTER, line.c_str());
    }
    return {Kind::kLine, line};
}

/// Returns 1, or 0 at the end of input and after a signal. Replaces the library's reader, which
/// would not notice the signals.
int LineEditor::NextCharacter(wchar_t& character)
{
    std::mbstate_t state{};
    char byte = 0;
    while (true) {
        m_interrupted = !m_signals.WaitFor(STDIN_FILENO);
        if (m_interrupted || ::read(STDIN_FILENO, &byte, 1) != 1) {
            return 0;
        }
        switch (std::mbrtowc(&character, &byte, 1, &state)) {
            case static_cast<std::size_t>(-2):  // an incomplete character
                break;
            case static_cast<std::size_t>(-1):  // an invalid byte is skipped
                state = {};
                break;
            default:
                return 1;
        }
    }
}

unsigned char LineEditor::CompleteLine()
{
    const LineInfo* line = el_line(m_editor);
    const std::string text(line->buffer, line->cursor);
    const std::vector<std::string> completions = m_completions(text);
    if (completions.empty()) {
        return CC_REFRESH_BEEP;
    }
    if (const std::string common = CommonBeginning(completions); common.size() > text.size()) {
        el_insertstr(m_editor, common.substr(text.size()).c_str());
        return CC_REFRESH;
    }
    std::fputc('\n', stdout);
    for (const std::string& completion : completions) {
        std::fprintf(stdout, "%s\n", completion.c_str());
    }
    return CC_REDISPLAY;
}

void LineEditor::LoadHistory()
{
    // The library would read any file, of any size and kind.
    std::error_code error;
    if (std::filesystem::is_regular_file(m_historyPath, error) &&
        std::filesystem::file_size(m_historyPath, error) <= Orlu::Limits::kFileBytes) {
        HistEvent event;
        history(m_history, &event, H_LOAD, m_historyPath.c_str());
    }
}

void LineEditor::KeepHistory()
{
    if (m_historyPath.empty()) {
        return;
    }
    std::error_code error;
    std::filesystem::create_directories(std::filesystem::path(m_historyPath).parent_path(), error);
    const std::string temporary = m_historyPath + "." + std::to_string(::getpid());
    // The library creates the file itself, so the mask makes it readable by its owner alone.
    const mode_t mask = ::umask(S_IRWXG | S_IRWXO);
    HistEvent event;
    if (history(m_history, &event, H_SAVE, temporary.c_str()) >= 0) {
        std::filesystem::rename(temporary, m_historyPath, error);
    }
    ::umask(mask);
    std::filesystem::remove(temporary, error);
}

}  // namespace OrluConsole
