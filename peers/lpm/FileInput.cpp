// SPDX-License-Identifier: Apache-2.0

#include "lpm/FileInput.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstring>

#include "orlu/Files.h"
#include "orlu/Limits.h"

namespace Lpm {

namespace {

std::optional<std::string> ReadAll(int fd, std::string& why)
{
    struct stat status {};
    if (Orlu::Files().Stat(fd, &status) != 0) {
        why = std::strerror(errno);
        return std::nullopt;
    }
    if (!S_ISREG(status.st_mode)) {
        why = "not a regular file";
        return std::nullopt;
    }
    // Reads to the end and does not trust the size in `status`: a file can grow meanwhile. The byte
    // above the limit tells a file that is too large.
    std::string text(Orlu::Limits::kFileBytes + 1, '\0');
    std::size_t size = 0;
    while (size < text.size()) {
        const ssize_t got = Orlu::Files().Read(fd, text.data() + size, text.size() - size);
        if (got < 0 && errno == EINTR) {
            continue;
        }
        if (got < 0) {
            why = std::strerror(errno);
            return std::nullopt;
        }
        if (got == 0) {
            text.resize(size);
            return text;
        }
        size += static_cast<std::size_t>(got);
    }
    why = "too large";
    return std::nullopt;
}

}  // namespace

std::optional<std::string> ReadInputFile(const std::string& path, std::string& why)
{
    // Opening a pipe without a writer would block and hang the start.
    const int fd = Orlu::Files().Open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK, 0);
    if (fd < 0) {
        why = std::strerror(errno);
        return std::nullopt;
    }
    auto text = ReadAll(fd, why);
    Orlu::Files().Close(fd);
    return text;
}

}  // namespace Lpm
