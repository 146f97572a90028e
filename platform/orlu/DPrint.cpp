// SPDX-License-Identifier: Apache-2.0

#include "orlu/DPrint.h"

#include <algorithm>
#include <cstdlib>
#include <iterator>

#include "orlu/LogLine.h"
#include "orlu/LogOutput.h"
#include "orlu/Runtime.h"

namespace {

DPrint::Sink g_sink = nullptr;

constexpr std::string_view kLevels[] = {"1", "2", "3", "4", "6"};

// The service does not call `ReadLevel`, so the level is read before `main`.
[[maybe_unused]] const bool kLevelRead = [] {
    DPrint::ReadLevel();
    return true;
}();

/// More text than this is written although the wake-up goes on.
constexpr std::size_t kPendingBytes = 16 * 1024;

/// The lines of this thread that have not been written yet.
struct PendingLines {
    PendingLines() = default;
    ~PendingLines() { Flush(); }
    PendingLines(const PendingLines&) = delete;
    PendingLines& operator=(const PendingLines&) = delete;

    void Flush()
    {
        // Reset here, so that the next line asks for a new call at the end of the wake-up.
        promisedBy = nullptr;
        if (!lines.empty()) {
            Orlu::LogOutput::Get().Write(lines);
            lines.clear();
        }
    }

    std::string lines;
    /// The queue that flushes at the end of its wake-up.
    Orlu::TaskQueueIF* promisedBy = nullptr;
};

PendingLines& Lines()
{
    thread_local PendingLines lines;
    return lines;
}

void FlushOrPromise(PendingLines& lines, int level)
{
    Orlu::TaskQueueIF* queue = Orlu::CurrentTaskQueue();
    // A thread without a queue has no end of wake-up. A failure may be the last thing that the
    // process writes.
    if (!queue || level <= 1 || lines.lines.size() >= kPendingBytes) {
        lines.Flush();
    } else if (lines.promisedBy != queue) {
        lines.promisedBy = queue;
        queue->AtEndOfWakeUp([] { Lines().Flush(); });
    }
}

void AppendText(std::string& line, std::string_view prefix, std::string_view text)
{
    if (!prefix.empty()) {
        line.append(prefix).append(": ");
    }
    Orlu::AppendEscaped(line, text);
}

}  // namespace

void DPrint::Put(int level, std::string_view text) const
{
    if (!IsLog(level)) {
        return;
    }
    if (g_sink) {
        std::string line;
        AppendText(line, m_prefix, text);
        g_sink(level, m_name, line);
        return;
    }
    PendingLines& lines = Lines();
    Orlu::AppendLogHead(lines.lines, level, m_name);
    AppendText(lines.lines, m_prefix, text);
    lines.lines += '\n';
    FlushOrPromise(lines, level);
}

void DPrint::PutFormatted(int level, fmt::string_view format, fmt::format_args args) const
{
    fmt::memory_buffer text;
    fmt::vformat_to(std::back_inserter(text), format, args);
    Put(level, {text.data(), text.size()});
}

void DPrint::Flush()
{
    Lines().Flush();
}

void DPrint::ReadLevel()
{
    const char* level = std::getenv("ORLU_LOG_LEVEL");
    if (level && std::ranges::find(kLevels, level) != std::end(kLevels)) {
        s_level = *level - '0';
    }
}

std::string_view Orlu::PendingLogLines()
{
    return Lines().lines;
}

void DPrint::SetSink(Sink sink)
{
    g_sink = sink;
}
