// SPDX-License-Identifier: Apache-2.0

#include "console/PlainInput.h"

#include <array>
#include <utility>

#include <unistd.h>

#include "orlu/Limits.h"

namespace OrluConsole {

InputIF::Input PlainInput::Read()
{
    Input input{Kind::kLine};
    while (!TakeLine(input)) {
        std::array<char, 4096> piece{};
        if (!m_signals.WaitFor(m_fd)) {
            return {Kind::kInterrupted};
        }
        const ssize_t size = ::read(m_fd, piece.data(), piece.size());
        if (size > 0) {
            m_kept.append(piece.data(), static_cast<std::size_t>(size));
            continue;
        }
        if (size < 0 || (m_kept.empty() && !m_passingOver)) {
            return {Kind::kEnd};
        }
        // The last line has no line feed: TakeLine takes it with this one.
        m_kept += '\n';
    }
    return input;
}

bool PlainInput::TakeLine(Input& input)
{
    const std::size_t end = m_kept.find('\n');
    if (end == std::string::npos) {
        if (m_kept.size() > Orlu::Limits::kConsoleLineBytes) {
            // Not kept to its end, so that a line of any length needs bounded memory.
            m_passingOver = true;
            m_kept.clear();
        }
        return false;
    }
    input.line = m_kept.substr(0, end);
    m_kept.erase(0, end + 1);
    if (std::exchange(m_passingOver, false) ||
        input.line.size() > Orlu::Limits::kConsoleLineBytes) {
        input = {Kind::kTooLong};
    }
    return true;
}

}  // namespace OrluConsole
