// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>
#include <cstdint>

namespace Orlu {

/// The names of this program's own functions, from the symbol table of its file. Allocates nothing
/// and takes no lock, so it may be used in a fault handler. A stripped program has only the names
/// of exported functions.
class ExecutableSymbols {
public:
    ExecutableSymbols();
    ~ExecutableSymbols();
    ExecutableSymbols(const ExecutableSymbols&) = delete;
    ExecutableSymbols& operator=(const ExecutableSymbols&) = delete;

    /// The mangled name of the function that contains the address; null for any other address.
    /// Valid during the lifetime of this object.
    const char* Find(std::uintptr_t address) const;

private:
    bool ReadSections();
    template <class T>
    const T* At(std::uint64_t offset, std::uint64_t count) const;

    const unsigned char* m_file = nullptr;
    std::size_t m_size = 0;
    std::uintptr_t m_bias = 0;
    const void* m_symbols = nullptr;
    std::size_t m_symbolCount = 0;
    const char* m_names = nullptr;
    std::size_t m_namesSize = 0;
};

}  // namespace Orlu
