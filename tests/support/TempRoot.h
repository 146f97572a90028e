// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>

/// An empty folder as `ORLU_ROOT`, for as long as it lives.
class TempRoot {
public:
    TempRoot()
    {
        std::string name = (std::filesystem::temp_directory_path() / "orlu-XXXXXX").string();
        m_path = ::mkdtemp(name.data());
        ::setenv("ORLU_ROOT", m_path.c_str(), 1);
    }
    ~TempRoot()
    {
        ::unsetenv("ORLU_ROOT");
        std::filesystem::remove_all(m_path);
    }
    TempRoot(const TempRoot&) = delete;
    TempRoot& operator=(const TempRoot&) = delete;

    /// The real path of an absolute path of the product.
    std::filesystem::path operator/(std::string_view path) const
    {
        return m_path / path.substr(path.starts_with('/') ? 1 : 0);
    }

    void Put(std::string_view path, std::string_view content) const
    {
        std::filesystem::create_directories((*this / path).parent_path());
        std::ofstream(*this / path, std::ios::binary) << content;
    }

    std::string Content(std::string_view path) const
    {
        std::ifstream file(*this / path, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }

private:
    std::filesystem::path m_path;
};
