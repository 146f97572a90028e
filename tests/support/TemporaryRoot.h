// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

/// A folder that is `ORLU_ROOT` while this object exists. The destructor removes it.
class TemporaryRoot {
public:
    TemporaryRoot() : m_path((std::filesystem::temp_directory_path() / "root.XXXXXX").string())
    {
        if (mkdtemp(m_path.data()) == nullptr) {
            std::abort();
        }
        setenv("ORLU_ROOT", m_path.c_str(), 1);
    }
    ~TemporaryRoot()
    {
        unsetenv("ORLU_ROOT");
        std::error_code ignored;
        std::filesystem::remove_all(m_path, ignored);
    }
    TemporaryRoot(const TemporaryRoot&) = delete;
    TemporaryRoot& operator=(const TemporaryRoot&) = delete;

    const std::string& Path() const { return m_path; }

    /// `path` is absolute, as in the product.
    void Write(const std::string& path, const std::string& text) const
    {
        const std::filesystem::path file = m_path + path;
        std::filesystem::create_directories(file.parent_path());
        std::ofstream(file, std::ios::binary) << text;
    }
    /// Empty if there is no such file.
    std::string Read(const std::string& path) const
    {
        std::ifstream file(m_path + path, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }

private:
    std::string m_path;
};
