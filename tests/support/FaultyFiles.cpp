// SPDX-License-Identifier: Apache-2.0

#include "support/FaultyFiles.h"

#include <algorithm>
#include <cerrno>
#include <csignal>

namespace {

Orlu::FileSystemIF& RealFiles()
{
    Orlu::InstallFiles(nullptr);
    return Orlu::Files();
}

}  // namespace

FaultyFiles::FaultyFiles() : m_real(RealFiles())
{
    Orlu::InstallFiles(this);
}

FaultyFiles::~FaultyFiles()
{
    Orlu::InstallFiles(nullptr);
}

void FaultyFiles::FailCall(int call, int error, Lasting lasting)
{
    m_failing = m_calls + call;
    m_error = error;
    m_lasting = lasting;
}

bool FaultyFiles::Fails()
{
    ++m_calls;
    if (m_calls == m_killing) {
        std::raise(SIGKILL);
    }
    const bool due = m_lasting == Lasting::Once ? m_calls == m_failing : m_calls >= m_failing;
    if (m_failing == 0 || !due) {
        return false;
    }
    errno = m_error;
    return true;
}

int FaultyFiles::Open(const char* path, int flags, mode_t mode)
{
    if (Fails()) {
        return -1;
    }
    const int fd = m_real.Open(path, flags, mode);
    m_open += fd >= 0 ? 1 : 0;
    return fd;
}

ssize_t FaultyFiles::Read(int fd, void* data, std::size_t size)
{
    return Fails() ? -1 : m_real.Read(fd, data, std::min(size, m_bytes));
}

ssize_t FaultyFiles::Write(int fd, const void* data, std::size_t size)
{
    return Fails() ? -1 : m_real.Write(fd, data, std::min(size, m_bytes));
}

int FaultyFiles::Stat(int fd, struct stat* status)
{
    return Fails() ? -1 : m_real.Stat(fd, status);
}

int FaultyFiles::Sync(int fd)
{
    if (Fails()) {
        return -1;
    }
    return m_syncs ? m_real.Sync(fd) : 0;
}

// A close that fails still closes the descriptor, as in the system.
int FaultyFiles::Close(int fd)
{
    --m_open;
    const bool fails = Fails();
    const int error = errno;
    const int result = m_real.Close(fd);
    errno = error;
    return fails ? -1 : result;
}

int FaultyFiles::Rename(const char* from, const char* to)
{
    return Fails() ? -1 : m_real.Rename(from, to);
}

int FaultyFiles::Unlink(const char* path)
{
    return Fails() ? -1 : m_real.Unlink(path);
}
