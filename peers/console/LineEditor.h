// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include <histedit.h>

#include "console/InputIF.h"
#include "console/Signals.h"

namespace OrluConsole {

/// Reads lines from a terminal, with editing, completion by the tab key, and a history that is kept
/// between runs.
class LineEditor final : public InputIF {
public:
    /// Returns the completions of the text up to the cursor, each with that text in front.
    using Completions = std::function<std::vector<std::string>(std::string_view text)>;

    /// Without a path the history is not kept. `colour`: the prompt may contain colour codes.
    LineEditor(Signals& signals, std::string historyPath, bool colour, Completions completions);
    ~LineEditor() override;
    LineEditor(const LineEditor&) = delete;
    LineEditor& operator=(const LineEditor&) = delete;

    Input Read() override;

    /// Replaces the history file atomically. If it can't be written, the old file stays unchanged.
    void KeepHistory();

private:
    static wchar_t* Prompt(EditLine* editor);
    static int GetCharacter(EditLine* editor, wchar_t* character);
    static unsigned char Complete(EditLine* editor, int character);
    static LineEditor& Of(EditLine* editor);

    int NextCharacter(wchar_t& character);
    unsigned char CompleteLine();
    void LoadHistory();

    Signals& m_signals;
    std::string m_historyPath;
    std::wstring m_prompt;
    Completions m_completions;
    History* m_history;
    EditLine* m_editor;
    bool m_interrupted = false;
};

}  // namespace OrluConsole
