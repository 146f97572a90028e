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

/// Lines from a terminal: editing, history kept between runs, completion with the tab key.
class LineEditor final : public InputIF {
public:
    /// What the text up to the cursor may go on to, each as the whole text.
    using Completions = std::function<std::vector<std::string>(std::string_view text)>;

    /// An empty path: the history is not kept. `colour`: the prompt may have one.
    LineEditor(Signals& signals, std::string historyPath, bool colour, Completions completions);
    ~LineEditor() override;
    LineEditor(const LineEditor&) = delete;
    LineEditor& operator=(const LineEditor&) = delete;

    Input Read() override;

    /// Writes the history, in place of the file as a whole. A file that can't be written stays as
    /// it was.
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
