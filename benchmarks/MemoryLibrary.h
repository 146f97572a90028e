// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace Bench {

/// Replaces the UEI library: brands of one device type, in memory and sorted by name. Functions
/// that a brand list doesn't need return an error. One for the process.
class MemoryLibrary {
public:
    /// Makes that many names of some 12 characters, spread over the digits and letters.
    static void Fill(std::size_t count);

    /// The names that begin with `prefix`, without regard to case, as the library's list.
    static std::size_t Retrieve(std::string_view prefix);
    static const std::string* Name(std::size_t index);

private:
    static inline std::vector<std::string> s_names;
    static inline std::size_t s_begin = 0;
    static inline std::size_t s_end = 0;
};

}  // namespace Bench
