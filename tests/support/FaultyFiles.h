// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>

#include "orlu/Files.h"

/// The real files, with one call that fails on purpose. In force while this object exists.
class FaultyFiles final : public Orlu::FileSystemIF {
public:
    enum class Lasting { Once, FromThenOn };

    FaultyFiles();
    ~FaultyFiles() override;
    FaultyFiles(const FaultyFiles&) = delete;
    FaultyFiles& operator=(const FaultyFiles&) = delete;

    /// The `call`-th call from now (1 is the next) fails with `error`. `EINTR` does nothing to a
    /// call that cannot be interrupted.
    void FailCall(int call, int error, Lasting lasting = Lasting::Once);

    /// The process is killed where the `call`-th call from now would begin.
    void KillAt(int call) { m_killing = m_calls + call; }

    void FailNone() { m_failing = 0; }

    /// No read or write takes more than so many bytes.
    void LimitBytes(std::size_t bytes) { m_bytes = bytes; }

    /// From now on no call waits for the disk.
    void SkipSync() { m_syncs = false; }

    int Calls() const { return m_calls; }
    /// Descriptors that were opened and not closed.
    int OpenNow() const { return m_open; }

    int Open(const char* path, int flags, mode_t mode) override;
    ssize_t Read(int fd, void* data, std::size_t size) override;
    ssize_t Write(int fd, const void* data, std::size_t size) override;
    int Stat(int fd, struct stat* status) override;
    int Sync(int fd) override;
    int Close(int fd) override;
    int Rename(const char* from, const char* to) override;
    int Unlink(const char* path) override;

private:
    bool Fails();

    Orlu::FileSystemIF& m_real;
    int m_calls = 0;
    int m_failing = 0;
    int m_killing = 0;
    int m_error = 0;
    Lasting m_lasting = Lasting::Once;
    std::size_t m_bytes = SIZE_MAX;
    bool m_syncs = true;
    int m_open = 0;
};
