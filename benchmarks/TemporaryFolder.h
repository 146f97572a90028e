// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <system_error>

namespace Bench {

/// A folder that the destructor removes.
class TemporaryFolder {
public:
    TemporaryFolder()
    {
        std::string pattern = std::filesystem::temp_directory_path() / "trellan-bench-XXXXXX";
        if (::mkdtemp(pattern.data()) == nullptr) {
            throw std::filesystem::filesystem_error(
                "mkdtemp", pattern, std::error_code(errno, std::generic_category()));
        }
        m_path = pattern;
    }
    ~TemporaryFolder()
    {
        std::error_code ignored;
        std::filesystem::remove_all(m_path, ignored);
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    const std::filesystem::path& Path() const { return m_path; }

private:
    std::filesystem::path m_path;
};

}  // namespace Bench
