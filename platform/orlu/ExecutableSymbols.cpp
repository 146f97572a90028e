// SPDX-License-Identifier: Apache-2.0

#include "orlu/ExecutableSymbols.h"

#include <elf.h>
#include <fcntl.h>
#include <link.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

/// Defined by the linker: the start of this program in memory.
// NOLINTNEXTLINE(bugprone-reserved-identifier): the linker's name for it
extern "C" const ElfW(Ehdr) __ehdr_start;

namespace Orlu {

ExecutableSymbols::ExecutableSymbols()
{
    const int fd = ::open("/proc/self/exe", O_RDONLY | O_CLOEXEC);
    struct stat status {};
    if (fd >= 0 && ::fstat(fd, &status) == 0) {
        m_size = static_cast<std::size_t>(status.st_size);
        void* file = ::mmap(nullptr, m_size, PROT_READ, MAP_PRIVATE, fd, 0);
        m_file = file == MAP_FAILED ? nullptr : static_cast<const unsigned char*>(file);
    }
    if (fd >= 0) {
        ::close(fd);
    }
    if (!m_file || !ReadSections()) {
        m_symbolCount = 0;
    }
}

ExecutableSymbols::~ExecutableSymbols()
{
    if (m_file) {
        ::munmap(const_cast<unsigned char*>(m_file), m_size);
    }
}

/// `count` objects at an offset of the file; null if they are not all inside it.
template <class T>
const T* ExecutableSymbols::At(std::uint64_t offset, std::uint64_t count) const
{
    const bool inside = offset <= m_size && count <= (m_size - offset) / sizeof(T);
    return inside ? reinterpret_cast<const T*>(m_file + offset) : nullptr;
}

bool ExecutableSymbols::ReadSections()
{
    const auto* header = At<ElfW(Ehdr)>(0, 1);
    if (!header) {
        return false;
    }
    // The addresses of the file are relative to the place where the program was loaded.
    const auto* programs = At<ElfW(Phdr)>(header->e_phoff, header->e_phnum);
    for (int i = 0; programs && i < header->e_phnum; ++i) {
        if (programs[i].p_type == PT_LOAD && programs[i].p_offset == 0) {
            m_bias = reinterpret_cast<std::uintptr_t>(&__ehdr_start) - programs[i].p_vaddr;
        }
    }
    const auto* sections = At<ElfW(Shdr)>(header->e_shoff, header->e_shnum);
    const ElfW(Shdr)* table = nullptr;
    for (int i = 0; sections && i < header->e_shnum; ++i) {
        // The full table is preferred: the dynamic one holds only exported functions.
        const bool full = sections[i].sh_type == SHT_SYMTAB;
        if (full || (sections[i].sh_type == SHT_DYNSYM && !table)) {
            table = &sections[i];
        }
    }
    if (!table || table->sh_link >= header->e_shnum) {
        return false;
    }
    const ElfW(Shdr)& names = sections[table->sh_link];
    m_symbolCount = table->sh_size / sizeof(ElfW(Sym));
    m_symbols = At<ElfW(Sym)>(table->sh_offset, m_symbolCount);
    m_namesSize = names.sh_size;
    m_names = At<char>(names.sh_offset, m_namesSize);
    // The zero at the end makes every name inside the table end inside it.
    return m_symbols && m_names && m_namesSize > 0 && m_names[m_namesSize - 1] == '\0';
}

const char* ExecutableSymbols::Find(std::uintptr_t address) const
{
    const std::uintptr_t place = address - m_bias;
    const auto* symbols = static_cast<const ElfW(Sym)*>(m_symbols);
    // Linear, because sorting would need memory, which a fault may not take.
    for (std::size_t i = 0; i < m_symbolCount; ++i) {
        const ElfW(Sym)& symbol = symbols[i];
        if (ELF64_ST_TYPE(symbol.st_info) == STT_FUNC && symbol.st_shndx != SHN_UNDEF &&
            place >= symbol.st_value && place - symbol.st_value < symbol.st_size &&
            symbol.st_name < m_namesSize) {
            return m_names + symbol.st_name;
        }
    }
    return nullptr;
}

}  // namespace Orlu
