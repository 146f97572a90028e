// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>
#include <cstdint>

namespace Orlu {

/// The names of this program's own functions, from the symbol table of its file. Takes nothing from
/// the heap and no lock: it may be used in a fault. A stripped program has names for what it
/// exports only.
class ExecutableSymbols {
public:
    ExecutableSymbols();
    ~ExecutableSymbols();
    ExecutableSymbols(const ExecutableSymbols&) = delete;
    ExecutableSymbols& operator=(const ExecutableSymbols&) = delete;

    /// The mangled name of the function that holds the address; null for any other address. Valid
    /// while this lives.
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
