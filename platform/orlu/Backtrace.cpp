// SPDX-License-Identifier: Apache-2.0

#include "orlu/Backtrace.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string_view>

#include <cxxabi.h>
#include <dlfcn.h>
#include <sys/mman.h>
#include <unistd.h>
#include <unwind.h>

#include "orlu/ExecutableSymbols.h"
#include "orlu/LogLine.h"

namespace {

constexpr unsigned kEndAfterSeconds = 2;
constexpr int kMostFrames = 64;

/// Enough for reading symbols and names; only touched pages cost memory.
constexpr std::size_t kStackBytes = 256 * 1024;

void (*g_handler)(int) = nullptr;

/// The mangled name of a frame's function; null if it has none.
const char* NameOf(const Orlu::ExecutableSymbols& symbols, std::uintptr_t frame)
{
    // A return address is behind its call, which may be the last instruction of the function.
    const std::uintptr_t call = frame - 1;
    if (const char* name = symbols.Find(call)) {
        return name;
    }
    Dl_info info{};
    // NOLINTNEXTLINE(performance-no-int-to-ptr): an address of the stack's, never followed
    return ::dladdr(reinterpret_cast<void*>(call), &info) != 0 ? info.dli_sname : nullptr;
}

std::string Demangle(const char* symbol)
{
    int status = 0;
    const std::unique_ptr<char, decltype(&std::free)> name(
        abi::__cxa_demangle(symbol, nullptr, nullptr, &status), &std::free);
    return name ? name.get() : symbol;
}

bool IsDigit(char c)
{
    return c >= '0' && c <= '9';
}

/// Takes the next identifier from a mangled name, in which its length is written before it.
std::string_view TakeIdentifier(std::string_view& mangled)
{
    std::size_t length = 0;
    // Ends once the length is above what is left, so that it cannot overflow.
    while (!mangled.empty() && IsDigit(mangled[0]) && length < mangled.size()) {
        length = length * 10 + static_cast<std::size_t>(mangled[0] - '0');
        mangled.remove_prefix(1);
    }
    const std::string_view identifier = mangled.substr(0, length);
    mangled.remove_prefix(identifier.size());
    return identifier;
}

struct Frames {
    std::uintptr_t at[kMostFrames];
    int count = 0;
};

_Unwind_Reason_Code AddFrame(_Unwind_Context* context, void* into)
{
    auto& frames = *static_cast<Frames*>(into);
    const std::uintptr_t frame = _Unwind_GetIP(context);
    if (frame == 0 || frames.count == kMostFrames) {
        // A damaged stack may have no end.
        return _URC_END_OF_STACK;
    }
    frames.at[frames.count++] = frame;
    return _URC_NO_REASON;
}

void WriteAll(const char* text, std::size_t size)
{
    while (size > 0) {
        const ssize_t count = ::write(STDERR_FILENO, text, size);
        if (count <= 0) {
            // Any other error ends the attempt: there is nowhere to report it.
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
        : m_size(Orlu::WriteLogHead(m_text, kCapacity, 1, logger))
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
        const std::size_t size = std::min(text.size(), kCapacity - m_size);
        std::copy_n(text.data(), size, m_text + m_size);
        m_size += size;
    }

    /// `__cxa_demangle` allocates memory, so this gives scopes and function, without parameters,
    /// and any other name unchanged.
    void AppendName(std::string_view symbol)
    {
        std::string_view rest = symbol;
        rest.remove_prefix(rest.starts_with("_Z") ? std::min<std::size_t>(2, rest.size()) : 0);
        rest.remove_prefix(std::min(rest.find_first_not_of("ZNKLVRO"), rest.size()));
        const bool isStandard = rest.starts_with("St");
        rest.remove_prefix(isStandard ? 2 : 0);
        if (rest.size() == symbol.size() || rest.empty() || !IsDigit(rest[0])) {
            Append(symbol);
            return;
        }
        Append(isStandard ? "std" : "");
        for (bool first = !isStandard; !rest.empty() && IsDigit(rest[0]); first = false) {
            Append(first ? "" : "::");
            const std::string_view identifier = TakeIdentifier(rest);
            Append(identifier == "_GLOBAL__N_1" ? "(anonymous namespace)" : identifier);
        }
    }

private:
    static constexpr std::size_t kCapacity = 1023;
    char m_text[kCapacity + 1];
    std::size_t m_size;
};

void HandleFault(int signal)
{
    // First, before anything that could wait: whatever the handler does, the process ends in two
    // seconds. The thread may have blocked the signal.
    std::signal(SIGALRM, SIG_DFL);
    sigset_t alarms;
    sigemptyset(&alarms);
    sigaddset(&alarms, SIGALRM);
    pthread_sigmask(SIG_UNBLOCK, &alarms, nullptr);
    ::alarm(kEndAfterSeconds);
    g_handler(signal);
    // Last, because this memory may be what the fault damaged.
    const std::string_view lines = Orlu::PendingLogLines();
    WriteAll(lines.data(), lines.size());
}

/// The handler's stack for one thread, freed with the thread. A thread whose own stack overflowed
/// has no space for the handler on it.
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
    Frames frames;
    _Unwind_Backtrace(AddFrame, &frames);
    const Orlu::ExecutableSymbols symbols;
    std::vector<std::string> names;
    // Without this function itself.
    for (int i = 1; i < frames.count; ++i) {
        const char* name = NameOf(symbols, frames.at[i]);
        names.push_back(name ? Demangle(name) : "");
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
    GiveThreadFaultStack();
    struct sigaction action {};
    action.sa_handler = HandleFault;
    action.sa_flags = SA_ONSTACK;
    sigemptyset(&action.sa_mask);
    ::sigaction(SIGSEGV, &action, nullptr);
}

void WarmFaultHandler()
{
    Frames frames;
    _Unwind_Backtrace(AddFrame, &frames);
}

void FaultLog(const char* logger, const char* text)
{
    FaultLine(logger).Append(text);
}

void FaultBacktrace(const char* logger)
{
    Frames frames;
    _Unwind_Backtrace(AddFrame, &frames);
    const ExecutableSymbols symbols;
    for (int i = 1; i < frames.count; ++i) {
        const char* name = NameOf(symbols, frames.at[i]);
        FaultLine(logger).AppendName(name ? name : "<unresolved>");
    }
}

}  // namespace Orlu
