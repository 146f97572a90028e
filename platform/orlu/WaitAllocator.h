// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>
#include <new>
#include <vector>

namespace Orlu {

/// Memory for repeated waits of one loop. Asio reuses such memory only inside its loop; a wait that
/// begins at the end of a wake-up would allocate memory each time. Must outlive the loop.
class WaitMemory {
public:
    WaitMemory() = default;
    ~WaitMemory()
    {
        for (void* const block : m_free) {
            ::operator delete(block);
        }
    }
    WaitMemory(const WaitMemory&) = delete;
    WaitMemory& operator=(const WaitMemory&) = delete;

    void* Take(std::size_t size)
    {
        if (size > kBlockBytes) {
            return ::operator new(size);
        }
        if (m_free.empty()) {
            return ::operator new(kBlockBytes);
        }
        void* const block = m_free.back();
        m_free.pop_back();
        return block;
    }

    void GiveBack(void* memory, std::size_t size)
    {
        if (size > kBlockBytes) {
            ::operator delete(memory);
        } else {
            m_free.push_back(memory);
        }
    }

private:
    /// Enough for a wait on a socket.
    static constexpr std::size_t kBlockBytes = 256;

    std::vector<void*> m_free;
};

/// The allocator for handlers of that loop.
template <class T>
class WaitAllocator {
public:
    using value_type = T;

    explicit WaitAllocator(WaitMemory& memory) : m_memory(&memory) {}
    template <class U>
    WaitAllocator(const WaitAllocator<U>& other)  // NOLINT(google-explicit-constructor): as all are
        : m_memory(other.m_memory)
    {
    }

    // NOLINTBEGIN(readability-identifier-naming): the names that the standard gives an allocator
    T* allocate(std::size_t count) { return static_cast<T*>(m_memory->Take(count * sizeof(T))); }
    void deallocate(T* memory, std::size_t count) { m_memory->GiveBack(memory, count * sizeof(T)); }
    // NOLINTEND(readability-identifier-naming)

    template <class U>
    bool operator==(const WaitAllocator<U>& other) const
    {
        return m_memory == other.m_memory;
    }

private:
    template <class>
    friend class WaitAllocator;
    WaitMemory* m_memory;
};

}  // namespace Orlu
