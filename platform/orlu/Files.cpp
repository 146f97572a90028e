// SPDX-License-Identifier: Apache-2.0

#include "orlu/Files.h"

#include <cstdio>

#include <fcntl.h>
#include <unistd.h>

namespace Orlu {

namespace {

class SystemFiles final : public FileSystemIF {
public:
    int Open(const char* path, int flags, mode_t mode) override
    {
        return ::open(path, flags, mode);
    }
    ssize_t Read(int fd, void* data, std::size_t size) override { return ::read(fd, data, size); }
    ssize_t Write(int fd, const void* data, std::size_t size) override
    {
        return ::write(fd, data, size);
    }
    int Stat(int fd, struct stat* status) override { return ::fstat(fd, status); }
    int Sync(int fd) override { return ::fsync(fd); }
    int Close(int fd) override { return ::close(fd); }
    int Rename(const char* from, const char* to) override { return std::rename(from, to); }
    int Unlink(const char* path) override { return ::unlink(path); }
};

FileSystemIF* g_files = nullptr;

}  // namespace

FileSystemIF& Files()
{
    static SystemFiles system;
    return g_files ? *g_files : system;
}

void InstallFiles(FileSystemIF* files)
{
    g_files = files;
}

}  // namespace Orlu
