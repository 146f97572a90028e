// SPDX-License-Identifier: Apache-2.0

#include "orlu/SystemUtils.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>

#include <fcntl.h>
#include <sys/file.h>

#include "orlu/DPrint.h"
#include "orlu/Files.h"
#include "orlu/Limits.h"

namespace {

constexpr DPrint kLog("SystemUtils");

std::string Reason(int error)
{
    return std::strerror(error);  // NOLINT(concurrency-mt-unsafe): the C locale's fixed texts
}

/// A descriptor that is closed at the end of its scope.
class File {
public:
    File(const std::string& path, int flags, mode_t mode = 0)
    {
        do {
            m_fd = Orlu::Files().Open(path.c_str(), flags | O_CLOEXEC | O_NOCTTY, mode);
        } while (m_fd < 0 && errno == EINTR);
    }
    ~File()
    {
        if (m_fd >= 0) {
            // The caller reports the reason of the failure, not that of the close.
            const int error = errno;
            Orlu::Files().Close(m_fd);
            errno = error;
        }
    }
    File(const File&) = delete;
    File& operator=(const File&) = delete;

    explicit operator bool() const { return m_fd >= 0; }

    /// 0, or the reason. The status of a regular file only.
    int RegularStatus(struct stat& status) const
    {
        if (Orlu::Files().Stat(m_fd, &status) != 0) {
            return errno;
        }
        return S_ISREG(status.st_mode) ? 0 : EINVAL;
    }

    ssize_t Read(char* data, std::size_t size) const
    {
        ssize_t count = -1;
        do {
            count = Orlu::Files().Read(m_fd, data, size);
        } while (count < 0 && errno == EINTR);
        return count;
    }

    bool WriteAll(std::string_view text) const
    {
        while (!text.empty()) {
            const ssize_t count = Orlu::Files().Write(m_fd, text.data(), text.size());
            if (count == 0) {
                // A write of 0 bytes sets no reason, and repeating it could loop for ever.
                errno = EIO;
            }
            if (count == 0 || (count < 0 && errno != EINTR)) {
                return false;
            }
            text.remove_prefix(count > 0 ? static_cast<std::size_t>(count) : 0);
        }
        return true;
    }

    /// Not repeated: after a failure the kernel may have dropped the pages and report the next
    /// attempt as a success.
    bool Sync() const { return Orlu::Files().Sync(m_fd) == 0; }

    bool Close()
    {
        const int fd = m_fd;
        m_fd = -1;
        // Linux has closed the descriptor even if it reports EINTR.
        return Orlu::Files().Close(fd) == 0 || errno == EINTR;
    }

private:
    int m_fd = -1;
};

bool FillTemporary(const std::string& path, std::string_view text)
{
    // The file must be new: a link placed there would direct the write elsewhere.
    constexpr int kFlags = O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW;
    File file(path, kFlags, 0600);
    return file && file.WriteAll(text) && file.Sync() && file.Close();
}

bool SyncFolderOf(const std::string& path)
{
    const std::filesystem::path folder = std::filesystem::path(path).parent_path();
    const File file(folder.empty() ? "." : folder.string(), O_RDONLY | O_DIRECTORY);
    return file && file.Sync();
}

/// The steps of `WriteFile`; false with the reason in `errno`.
bool Replace(const std::string& path, std::string_view text)
{
    const std::string temporary = path + ".new";
    // A process that was killed in the middle of a write may have left one.
    Orlu::Files().Unlink(temporary.c_str());
    if (!FillTemporary(temporary, text) ||
        Orlu::Files().Rename(temporary.c_str(), path.c_str()) != 0) {
        const int error = errno;
        Orlu::Files().Unlink(temporary.c_str());
        errno = error;
        return false;
    }
    // Without this a power loss could undo the rename.
    return SyncFolderOf(path);
}

}  // namespace

namespace SystemUtils {

std::string RootedPath(std::string_view path)
{
    const char* root = std::getenv("ORLU_ROOT");
    if (!root || !path.starts_with('/')) {
        return std::string(path);
    }
    std::string_view prefix(root);
    while (prefix.ends_with('/')) {
        prefix.remove_suffix(1);
    }
    return std::string(prefix).append(path);
}

std::optional<std::string> ReadFile(const std::string& path)
{
    const auto refuse = [&path](const std::string& reason) {
        kLog.Log(2, "{} cannot be read: {}", path, reason);
        return std::nullopt;
    };
    // O_NONBLOCK, because opening a pipe for reading would wait for its writer.
    const File file(RootedPath(path), O_RDONLY | O_NONBLOCK);
    if (!file) {
        return errno == ENOENT ? std::nullopt : refuse(Reason(errno));
    }
    struct stat status {};
    if (const int error = file.RegularStatus(status); error != 0) {
        return refuse(error == EINVAL ? "not a regular file" : Reason(error));
    }
    // One byte more than the file's size, so that the read which fills the text is followed by one
    // that tells its end. The file may grow meanwhile.
    constexpr std::size_t kLimit = Orlu::Limits::kFileBytes;
    std::string text(std::min(static_cast<std::size_t>(status.st_size), kLimit) + 1, '\0');
    std::size_t size = 0;
    for (;;) {
        const ssize_t count = file.Read(text.data() + size, text.size() - size);
        if (count < 0) {
            return refuse(Reason(errno));
        }
        size += static_cast<std::size_t>(count);
        if (size > kLimit) {
            return refuse("too large");
        }
        if (count == 0) {
            text.resize(size);
            return text;
        }
        if (size == text.size()) {
            text.resize(std::min(size * 2, kLimit + 1));
        }
    }
}

bool WriteFile(const char* begin, const char* end, const std::string& path)
{
    const std::string rooted = RootedPath(path);
    if (Replace(rooted, std::string_view(begin, static_cast<std::size_t>(end - begin)))) {
        return true;
    }
    kLog.Log(1, "{} cannot be written: {}", path, Reason(errno));
    return false;
}

void ThereCanBeOnlyOne()
{
    const std::string path = std::string("/run/orlu/") + program_invocation_short_name + ".lock";
    const std::string rooted = RootedPath(path);
    std::error_code error;
    const std::filesystem::path folder = std::filesystem::path(rooted).parent_path();
    if (std::filesystem::create_directories(folder, error)) {
        std::filesystem::permissions(folder, std::filesystem::perms::owner_all, error);
    }
    // Open until the process ends: the lock is released with the descriptor, also after a kill.
    const int fd = ::open(rooted.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600);
    if (fd >= 0 && ::flock(fd, LOCK_EX | LOCK_NB) == 0) {
        return;
    }
    if (fd >= 0 && errno == EWOULDBLOCK) {
        kLog.Log(1, "another {} is running", program_invocation_short_name);
    } else {
        kLog.Log(1, "{} cannot be locked: {}", path, Reason(errno));
    }
    std::exit(1);
}

}  // namespace SystemUtils

namespace DirUtils {

bool DoesFileExist(const std::string& path)
{
    return static_cast<bool>(File(SystemUtils::RootedPath(path), O_PATH));
}

bool Delete(const std::string& path, const DPrint& logger)
{
    if (Orlu::Files().Unlink(SystemUtils::RootedPath(path).c_str()) == 0) {
        return true;
    }
    logger.Log(2, "{} cannot be deleted: {}", path, Reason(errno));
    return false;
}

}  // namespace DirUtils
