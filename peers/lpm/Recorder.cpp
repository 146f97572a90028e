// SPDX-License-Identifier: Apache-2.0

#include "lpm/Recorder.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <utility>

#include "orlu/DPrint.h"

namespace Lpm {

namespace {

constexpr DPrint kLog("Recorder");

std::chrono::microseconds MonotonicNow()
{
    return std::chrono::duration_cast<std::chrono::microseconds>(
        std::chrono::steady_clock::now().time_since_epoch());
}

/// Appends to a descriptor and closes it at the end.
class FileWriter {
public:
    explicit FileWriter(int fd) : m_fd(fd) {}
    ~FileWriter() { close(m_fd); }
    FileWriter(const FileWriter&) = delete;
    FileWriter& operator=(const FileWriter&) = delete;

    bool Write(std::string_view line) const
    {
        while (!line.empty()) {
            const ssize_t written = write(m_fd, line.data(), line.size());
            if (written < 0 && errno == EINTR) {
                continue;
            }
            if (written <= 0) {
                return false;
            }
            line.remove_prefix(static_cast<std::size_t>(written));
        }
        return true;
    }

private:
    int m_fd;
};

}  // namespace

Recorder::Recorder(Clock clock, Writer writer)
    : m_clock(std::move(clock)), m_writer(std::move(writer))
{
}

std::unique_ptr<Recorder> Recorder::Open(const std::string& path, std::string& why)
{
    // O_APPEND: a record of an earlier run stays, and other programs can follow the file.
    const int fd = open(path.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600);
    if (fd < 0) {
        why = std::strerror(errno);
        return nullptr;
    }
    auto file = std::make_shared<FileWriter>(fd);
    return std::make_unique<Recorder>(&MonotonicNow,
                                      [file](std::string_view line) { return file->Write(line); });
}

void Recorder::Frame(std::uint32_t id, std::string_view frame)
{
    Write(fmt::format(R"("id": {}, "frame": "{}")", id, ToHex(frame)));
}

void Recorder::BulkFrame(std::uint32_t id, std::uint32_t length, std::uint32_t type,
                         std::string_view frame)
{
    Write(fmt::format(R"("id": {}, "length": {}, "type": {}, "frame": "{}")", id, length, type,
                      ToHex(frame)));
}

void Recorder::CecKey(std::uint32_t id, std::uint32_t value, std::uint32_t state)
{
    Write(fmt::format(R"("id": {}, "value": {}, "state": {})", id, value, state));
}

void Recorder::Emission(DeviceNumber device, std::uint8_t key, bool on)
{
    Write(fmt::format(R"("ir": {{"device": "0x{:04x}", "key": {}, "on": {}}})", device, key, on));
}

void Recorder::Write(const std::string& members)
{
    const auto now = m_clock().count();
    // On failure only the first line is logged: a full disk would log every line.
    const bool written =
        m_writer(fmt::format("{{\"ms\": {}.{:03}, {}}}\n", now / 1000, now % 1000, members));
    if (!written && !m_failed) {
        kLog.Log(1, "The record cannot be written: {}", std::strerror(errno));
    }
    m_failed = !written;
}

}  // namespace Lpm
