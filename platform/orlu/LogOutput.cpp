// SPDX-License-Identifier: Apache-2.0

#include "orlu/LogOutput.h"

#include <algorithm>
#include <cerrno>
#include <iterator>
#include <utility>

#include <fcntl.h>
#include <fmt/format.h>
#include <limits.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include "orlu/LogLine.h"

namespace Orlu {

namespace {

constexpr std::size_t kRestBytes = 64 * 1024;

/// How long a full pipe may block one write. After the first timeout no write waits any more.
constexpr int kWriteTimeoutMs = 10;

}  // namespace

LogOutput& LogOutput::Get()
{
    // Never destroyed: other objects' destructors log.
    static auto* const output = new LogOutput(STDERR_FILENO);
    return *output;
}

LogOutput::LogOutput(int fd) : m_stderr(fd)
{
    Open();
}

LogOutput::~LogOutput()
{
    if (m_fd != m_stderr) {
        ::close(m_fd);
    }
}

// O_NONBLOCK is not set on the descriptor itself: it would apply to every process that shares the
// open file, the shell included. A pipe or a terminal can be opened again for this process alone, a
// socket has a flag for each call.
void LogOutput::Open()
{
    m_fd = m_stderr;
    struct stat status {};
    if (::fstat(m_stderr, &status) != 0 || S_ISREG(status.st_mode)) {
        return;
    }
    if (S_ISSOCK(status.st_mode)) {
        m_kind = Kind::Socket;
        return;
    }
    const std::string path = fmt::format("/proc/self/fd/{}", m_stderr);
    const int own = ::open(path.c_str(), O_WRONLY | O_NONBLOCK | O_CLOEXEC | O_NOCTTY);
    m_kind = own >= 0 ? Kind::NonBlocking : Kind::Polled;
    m_fd = own >= 0 ? own : m_stderr;
}

void LogOutput::Write(std::string_view lines)
{
    const std::lock_guard lock(m_mutex);
    // The reader may have gone on since the last call, so space is made before lines are dropped.
    if (m_rest.size() + lines.size() > kRestBytes && !m_rest.empty()) {
        Flush();
    }
    if (m_rest.size() + lines.size() > kRestBytes && !m_rest.empty()) {
        m_dropped += static_cast<std::size_t>(std::ranges::count(lines, '\n'));
        return;
    }
    m_rest.append(lines);
    // Reported only once all is written, so that the line comes where the lines are missing.
    if (Flush() && m_dropped > 0) {
        AppendLogHead(m_rest, 2, "DPrint");
        fmt::format_to(std::back_inserter(m_rest), "{} lines dropped\n",
                       std::exchange(m_dropped, 0));
        Flush();
    }
}

bool LogOutput::Flush()
{
    while (!m_rest.empty()) {
        const long count = WriteSome();
        if (count > 0) {
            m_rest.erase(0, static_cast<std::size_t>(count));
        } else if (errno == EAGAIN) {
            if (!WaitOnce()) {
                m_stuck = true;
                return false;
            }
        } else if (errno != EINTR) {
            // There is nowhere to report this error, so the lines are dropped.
            m_rest.clear();
        }
    }
    m_stuck = false;
    return true;
}

long LogOutput::WriteSome()
{
    switch (m_kind) {
        case Kind::Plain:
        case Kind::NonBlocking:
            return ::write(m_fd, m_rest.data(), m_rest.size());
        case Kind::Socket:
            return ::send(m_fd, m_rest.data(), m_rest.size(), MSG_DONTWAIT | MSG_NOSIGNAL);
        case Kind::Polled:
            break;
    }
    pollfd poll{m_fd, POLLOUT, 0};
    if (::poll(&poll, 1, 0) != 1) {
        errno = EAGAIN;
        return -1;
    }
    // A pipe that is writable takes this many bytes without blocking.
    return ::write(m_fd, m_rest.data(), std::min<std::size_t>(m_rest.size(), PIPE_BUF));
}

bool LogOutput::WaitOnce() const
{
    pollfd poll{m_fd, POLLOUT, 0};
    return !m_stuck && ::poll(&poll, 1, kWriteTimeoutMs) == 1;
}

}  // namespace Orlu
