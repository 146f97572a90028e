// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>

#include <sys/stat.h>
#include <sys/types.h>

namespace Orlu {

/// The system calls for reading and writing files; results and `errno` as the system gives them. A
/// test installs one that fails.
class FileSystemIF {
public:
    virtual ~FileSystemIF() = default;
    virtual int Open(const char* path, int flags, mode_t mode) = 0;
    virtual ssize_t Read(int fd, void* data, std::size_t size) = 0;
    virtual ssize_t Write(int fd, const void* data, std::size_t size) = 0;
    virtual int Stat(int fd, struct stat* status) = 0;
    virtual int Sync(int fd) = 0;
    virtual int Close(int fd) = 0;
    virtual int Rename(const char* from, const char* to) = 0;
    virtual int Unlink(const char* path) = 0;
};

FileSystemIF& Files();

/// For tests: `files` is not owned; null: the real one again.
void InstallFiles(FileSystemIF* files);

}  // namespace Orlu
