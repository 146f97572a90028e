// SPDX-License-Identifier: Apache-2.0

#include "orlu/Backtrace.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <cstring>
#include <string_view>

#include <backtrace.h>
#include <sys/mman.h>
#include <unistd.h>

#include "orlu/LogLine.h"

// Of the C++ library: the one way to read a mangled name that takes no memory.
extern "C" int __gcclibcxx_demangle_callback(const char* mangled,
                                             void (*take)(const char*, std::size_t, void*),
                                             void* context);

namespace {

constexpr unsigned kEndAfterSeconds = 2;
constexpr int kMostFrames = 64;

/// Room for reading symbols and names; only touched pages cost memory.
constexpr std::size_t kStackBytes = 256 * 1024;

/// A longer name, from deep templates, is written as it stands: reading it takes stack.
constexpr std::size_t kMostMangled = 512;

void (*g_handler)(int) = nullptr;

/// The reader of symbols takes its memory from the system, not from the heap, and no lock.
backtrace_state* g_state = nullptr;

void IgnoreError(void*, const char*, int) {}

backtrace_state* State()
{
    static backtrace_state* const state = backtrace_create_state(nullptr, 1, IgnoreError, nullptr);
    return state;
}

/// Called with each part of a frame's name, in order.
struct NameTaker {
    void (*take)(const char* text, std::size_t size, void* context);
    void* context;
};

void TakeSymbol(void* data, std::uintptr_t, const char* symbol, std::uintptr_t, std::uintptr_t)
{
    const auto& taker = *static_cast<const NameTaker*>(data);
    if (!symbol) {
        return;
    }
    const std::size_t length = std::strlen(symbol);
    if (length > kMostMangled ||
        __gcclibcxx_demangle_callback(symbol, taker.take, taker.context) != 0) {
        taker.take(symbol, length, taker.context);
    }
}

int CountFrames(std::uintptr_t* frames, backtrace_state* state, int skip)
{
    struct Walk {
        std::uintptr_t* frames;
        int count;
    } walk{frames, 0};
    const auto add = [](void* data, std::uintptr_t frame) {
        auto& into = *static_cast<Walk*>(data);
        into.frames[into.count++] = frame;
        return into.count == kMostFrames ? 1 : 0;
    };
    backtrace_simple(state, skip, add, IgnoreError, &walk);
    // The outermost frame of a thread has no caller and reads as all ones.
    while (walk.count > 0 && frames[walk.count - 1] == UINTPTR_MAX) {
        --walk.count;
    }
    return walk.count;
}

void WriteAll(const char* text, std::size_t size)
{
    while (size > 0) {
        const ssize_t count = ::write(STDERR_FILENO, text, size);
        if (count <= 0) {
            if (count < 0 && errno == EINTR) {
                continue;
            }
            return;
        }
        text += count;
        size -= static_cast<std::size_t>(count);
    }
}

/// One line in a fixed buffer; what does not fit is cut.
class FaultLine {
public:
    explicit FaultLine(const char* logger)
        : m_size(Orlu::WriteLogHead(m_text, kRoom, 1, logger)), m_head(m_size)
    {
    }
    ~FaultLine()
    {
        m_text[m_size] = '\n';
        WriteAll(m_text, m_size + 1);
    }
    FaultLine(const FaultLine&) = delete;
    FaultLine& operator=(const FaultLine&) = delete;

    void Append(std::string_view text)
    {
        const std::size_t size = std::min(text.size(), kRoom - m_size);
        std::copy_n(text.data(), size, m_text + m_size);
        m_size += size;
    }

    bool HasText() const { return m_size > m_head; }

private:
    static constexpr std::size_t kRoom = 1023;
    char m_text[kRoom + 1];
    std::size_t m_size;
    std::size_t m_head;
};

void HandleFault(int signal)
{
    // Before anything that could wait: nothing that the handler does keeps the process alive.
    std::signal(SIGALRM, SIG_DFL);
    sigset_t alarms;
    sigemptyset(&alarms);
    sigaddset(&alarms, SIGALRM);
    pthread_sigmask(SIG_UNBLOCK, &alarms, nullptr);
    ::alarm(kEndAfterSeconds);
    g_handler(signal);
}

/// The handler's stack of one thread; leaves with the thread.
class FaultStack {
public:
    FaultStack()
    {
        m_memory = ::mmap(nullptr, kStackBytes, PROT_READ | PROT_WRITE,
                          MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
        if (m_memory != MAP_FAILED) {
            const stack_t stack{m_memory, 0, kStackBytes};
            ::sigaltstack(&stack, nullptr);
        }
    }
    ~FaultStack()
    {
        if (m_memory != MAP_FAILED) {
            const stack_t none{nullptr, SS_DISABLE, 0};
            ::sigaltstack(&none, nullptr);
            ::munmap(m_memory, kStackBytes);
        }
    }
    FaultStack(const FaultStack&) = delete;
    FaultStack& operator=(const FaultStack&) = delete;

private:
    void* m_memory;
};

}  // namespace

std::vector<std::string> backtrace()
{
    std::uintptr_t frames[kMostFrames];
    const int count = CountFrames(frames, State(), 1);
    std::vector<std::string> names(static_cast<std::size_t>(count));
    for (int i = 0; i < count; ++i) {
        const auto append = [](const char* text, std::size_t size, void* name) {
            static_cast<std::string*>(name)->append(text, size);
        };
        NameTaker taker{append, &names[static_cast<std::size_t>(i)]};
        backtrace_syminfo(State(), frames[i], TakeSymbol, IgnoreError, &taker);
    }
    return names;
}

namespace Orlu {

void GiveThreadFaultStack()
{
    thread_local FaultStack stack;
    static_cast<void>(stack);
}

void InstallFaultHandler(void (*handler)(int))
{
    g_handler = handler;
    g_state = State();
    GiveThreadFaultStack();
    struct sigaction action {};
    action.sa_handler = HandleFault;
    action.sa_flags = SA_ONSTACK;
    sigemptyset(&action.sa_mask);
    ::sigaction(SIGSEGV, &action, nullptr);
}

void FaultLog(const char* logger, const char* text)
{
    FaultLine(logger).Append(text);
}

void FaultBacktrace(const char* logger)
{
    if (!g_state) {
        return;
    }
    std::uintptr_t frames[kMostFrames];
    const int count = CountFrames(frames, g_state, 1);
    for (int i = 0; i < count; ++i) {
        FaultLine line(logger);
        const auto append = [](const char* text, std::size_t size, void* into) {
            static_cast<FaultLine*>(into)->Append({text, size});
        };
        NameTaker taker{append, &line};
        backtrace_syminfo(g_state, frames[i], TakeSymbol, IgnoreError, &taker);
        if (!line.HasText()) {
            line.Append("<unresolved>");
        }
    }
}

}  // namespace Orlu
