// SPDX-License-Identifier: Apache-2.0

#include "orlu/Process.h"

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <memory>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

#include <unistd.h>

#include "orlu/ConditionSemaphore.h"
#include "orlu/DPrint.h"
#include "orlu/Limits.h"

namespace Orlu {

namespace {

const DPrint s_log("Process");

sigset_t EndSignals()
{
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGINT);
    sigaddset(&signals, SIGTERM);
    return signals;
}

/// Cuts a byte stream into lines.
class LineCutter {
public:
    /// The lines that are completed by `bytes`.
    std::vector<std::string> Take(std::string_view bytes)
    {
        std::vector<std::string> lines;
        for (auto end = bytes.find('\n'); end != bytes.npos; end = bytes.find('\n')) {
            Append(bytes.substr(0, end));
            Finish(lines);
            bytes.remove_prefix(end + 1);
        }
        Append(bytes);
        return lines;
    }

    /// The text after the last line end, as a line, unless it is empty.
    std::vector<std::string> Rest()
    {
        std::vector<std::string> lines;
        if (!m_line.empty()) {
            Finish(lines);
        }
        return lines;
    }

private:
    void Append(std::string_view part)
    {
        // The rest of a line that is too long is read and dropped, so that the next line is whole
        // again.
        if (m_line.size() + part.size() > Limits::kFrameBytes) {
            m_tooLong = true;
        }
        if (!m_tooLong) {
            m_line.append(part);
        }
    }

    void Finish(std::vector<std::string>& lines)
    {
        auto line = std::exchange(m_line, {});
        if (std::exchange(m_tooLong, false)) {
            s_log.Log(2, "a line above {} bytes is dropped", Limits::kFrameBytes);
        } else {
            lines.push_back(std::move(line));
        }
    }

    std::string m_line;
    bool m_tooLong = false;
};

class LineReader {
public:
    LineReader(int fd, TaskQueuePtr queue, std::function<void(std::string)> line,
               std::function<void()> ended)
        : m_fd(fd), m_queue(std::move(queue)), m_line(std::move(line)), m_ended(std::move(ended))
    {
    }

    void Run(const std::shared_ptr<LineReader>& self)
    {
        LineCutter cutter;
        std::vector<char> buffer(4096);
        ssize_t size = 0;
        while ((size = ::read(m_fd, buffer.data(), buffer.size())) > 0 ||
               (size < 0 && errno == EINTR)) {
            const auto count = size > 0 ? static_cast<std::size_t>(size) : 0;
            if (!Give(self, cutter.Take({buffer.data(), count}))) {
                return;
            }
        }
        Give(self, cutter.Rest());
        m_queue->Post([self] {
            if (self->m_ended) {
                self->m_ended();
            }
        });
    }

private:
    /// Waits until the task has taken the lines, so that a fast writer can't fill the queue.
    bool Give(const std::shared_ptr<LineReader>& self, std::vector<std::string> lines)
    {
        if (lines.empty()) {
            return true;
        }
        if (!m_queue->Post([self, given = std::move(lines)]() mutable {
                for (auto& text : given) {
                    self->m_line(std::move(text));
                }
                self->m_taken.Signal();
            })) {
            return false;
        }
        m_taken.Wait();
        return true;
    }

    const int m_fd;
    const TaskQueuePtr m_queue;
    const std::function<void(std::string)> m_line;
    const std::function<void()> m_ended;
    ConditionSemaphore m_taken{0};
};

}  // namespace

void PrepareProcess()
{
    std::signal(SIGPIPE, SIG_IGN);
    // Blocked before any thread starts, because threads inherit the mask: only `sigwait` gets them.
    const auto signals = EndSignals();
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    DPrint::ReadLevel();
}

void WaitForEnd()
{
    const auto signals = EndSignals();
    int signal = 0;
    while (sigwait(&signals, &signal) != 0) {
    }
}

void SayReady()
{
    std::puts("ready");
    std::fflush(stdout);
}

void ReadLines(int fd, NotifyTargetTaskIF* task, std::function<void(std::string)> line,
               std::function<void()> ended)
{
    auto reader =
        std::make_shared<LineReader>(fd, task->Queue(), std::move(line), std::move(ended));
    // Detached, because a read from a terminal or pipe cannot be interrupted at the end.
    std::thread([reader] { reader->Run(reader); }).detach();
}

}  // namespace Orlu
