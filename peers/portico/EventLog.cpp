// SPDX-License-Identifier: Apache-2.0

#include "portico/EventLog.h"

#include "orlu/DPrint.h"

#include <cerrno>
#include <system_error>

#include <fcntl.h>
#include <unistd.h>

namespace PorticoApi {

namespace {

constexpr DPrint kLog("PorticoServer");

}  // namespace

EventLog::~EventLog()
{
    if (m_fd >= 0) {
        ::close(m_fd);
    }
}

bool EventLog::Open(const std::string& path)
{
    m_fd = ::open(path.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC | O_NOCTTY, 0600);
    return m_fd >= 0;
}

bool EventLog::Add(const std::string& json) const
{
    if (m_fd < 0) {
        return true;
    }
    const std::string line = json + "\n";
    std::size_t written = 0;
    while (written < line.size()) {
        const ssize_t count = ::write(m_fd, line.data() + written, line.size() - written);
        if (count <= 0 && errno != EINTR) {
            kLog.Log(1, "an event can't be written: {}", std::generic_category().message(errno));
            return false;
        }
        written += count > 0 ? static_cast<std::size_t>(count) : 0;
    }
    return true;
}

}  // namespace PorticoApi
