// SPDX-License-Identifier: Apache-2.0

#include "console/Signals.h"

#include <array>
#include <cerrno>
#include <csignal>

#include <poll.h>
#include <sys/signalfd.h>
#include <unistd.h>

namespace OrluConsole {

Signals::Signals()
{
    sigset_t set;
    sigemptyset(&set);
    sigaddset(&set, SIGINT);
    sigaddset(&set, SIGTERM);
    sigprocmask(SIG_BLOCK, &set, nullptr);
    std::signal(SIGPIPE, SIG_IGN);
    m_fd = ::signalfd(-1, &set, SFD_CLOEXEC | SFD_NONBLOCK);
}

Signals::~Signals()
{
    ::close(m_fd);
}

bool Signals::WaitFor(int fd)
{
    std::array<pollfd, 2> waited{{{m_fd, POLLIN, 0}, {fd, POLLIN, 0}}};
    while (!m_ended) {
        if (::poll(waited.data(), waited.size(), -1) < 0) {
            m_ended = errno != EINTR;
            continue;
        }
        if (waited[0].revents != 0) {
            m_ended = true;
        } else if (waited[1].revents != 0) {
            return true;
        }
    }
    return false;
}

}  // namespace OrluConsole
