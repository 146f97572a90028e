// SPDX-License-Identifier: Apache-2.0

#include "portico/Folder.h"

#include <cerrno>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace PorticoApi {

namespace {

class Descriptor {
public:
    explicit Descriptor(int fd) : m_fd(fd) {}
    ~Descriptor()
    {
        if (m_fd >= 0) {
            ::close(m_fd);
        }
    }
    Descriptor(Descriptor&& other) noexcept : m_fd(std::exchange(other.m_fd, -1)) {}
    Descriptor& operator=(Descriptor&& other) noexcept
    {
        std::swap(m_fd, other.m_fd);
        return *this;
    }

    int Get() const { return m_fd; }

private:
    int m_fd;
};

constexpr int kFolderFlags = O_PATH | O_DIRECTORY | O_CLOEXEC;
/// O_NONBLOCK: opening a pipe without a writer must not block the server's thread.
constexpr int kFileFlags = O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;

/// Opens the file one path component at a time with O_NOFOLLOW, so that no symbolic link below the
/// folder is followed. A check of the whole path could be outrun by a link that appears after it.
Descriptor OpenBelow(const std::string& folder, const std::string& path)
{
    Descriptor place(::open(folder.c_str(), kFolderFlags));
    std::size_t begin = 0;
    while (place.Get() >= 0) {
        const std::size_t end = path.find('/', begin);
        const std::string word = path.substr(begin, end - begin);
        const int flags = end == std::string::npos ? kFileFlags : kFolderFlags;
        if (word.empty() || word[0] == '.' || word.find('\0') != std::string::npos) {
            return Descriptor(-1);
        }
        place = Descriptor(::openat(place.Get(), word.c_str(), flags | O_NOFOLLOW));
        if (end == std::string::npos) {
            break;
        }
        begin = end + 1;
    }
    return place;
}

}  // namespace

std::optional<std::string> ReadFileBelow(const std::string& folder, const std::string& path,
                                         std::size_t limit)
{
    const Descriptor file = OpenBelow(folder, path);
    struct stat status {};
    if (file.Get() < 0 || ::fstat(file.Get(), &status) != 0 || !S_ISREG(status.st_mode) ||
        static_cast<std::size_t>(status.st_size) > limit) {
        return std::nullopt;
    }
    std::string bytes(static_cast<std::size_t>(status.st_size) + 1, '\0');
    std::size_t size = 0;
    // Reads one byte more than the file's size, to see its end or that it has grown.
    while (size < bytes.size()) {
        const ssize_t count = ::read(file.Get(), bytes.data() + size, bytes.size() - size);
        if (count < 0 && errno != EINTR) {
            return std::nullopt;
        }
        if (count == 0) {
            bytes.resize(size);
            return bytes;
        }
        size += count > 0 ? static_cast<std::size_t>(count) : 0;
    }
    return std::nullopt;
}

}  // namespace PorticoApi
