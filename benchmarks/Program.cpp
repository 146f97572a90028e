// SPDX-License-Identifier: Apache-2.0

#include "benchmarks/Program.h"

#include <csignal>
#include <ctime>
#include <fstream>
#include <stdexcept>
#include <system_error>
#include <utility>

#include <fcntl.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/wait.h>

namespace Bench {

namespace {

constexpr const char* kStore =
    R"({"codesets": [{"name": "T2051", "details": {"devNum": 2051, "ambiguousKeyBitMap": 0,)"
    R"( "checksum": "", "safeToBlast": false, "keyMap": {"keys": [1, 6, 7, 8, 13]}}}]})";

/// Sum of the fields `name` of a file of lines "name: number".
std::uint64_t SumOf(const std::filesystem::path& file, const std::string& name)
{
    std::ifstream lines(file);
    std::uint64_t sum = 0;
    for (std::string line; std::getline(lines, line);) {
        if (line.starts_with(name + ":")) {
            sum += std::stoull(line.substr(name.size() + 1));
        }
    }
    return sum;
}

std::filesystem::path ProcOf(pid_t pid)
{
    return "/proc/" + std::to_string(pid);
}

std::vector<char*> Pointers(const std::vector<std::string>& texts)
{
    std::vector<char*> pointers;
    pointers.reserve(texts.size() + 1);
    for (const auto& text : texts) {
        pointers.push_back(const_cast<char*>(text.c_str()));
    }
    pointers.push_back(nullptr);
    return pointers;
}

}  // namespace

Program::Program(const std::vector<std::string>& command, const std::filesystem::path& root,
                 int logLevel, const std::vector<std::string>& settings)
{
    std::vector<std::string> environment = {"ORLU_ROOT=" + root.string(),
                                            "ORLU_LOG_LEVEL=" + std::to_string(logLevel)};
    environment.insert(environment.end(), settings.begin(), settings.end());
    // A port without a listener, unless the settings name a local API: the first entry counts.
    environment.push_back("ORLU_PORTICO_PORT=1");
    const std::string log = root / "log";
    posix_spawn_file_actions_t actions;
    ::posix_spawn_file_actions_init(&actions);
    ::posix_spawn_file_actions_addopen(&actions, 2, log.c_str(), O_WRONLY | O_CREAT | O_APPEND,
                                       0600);
    // The program's output is not part of the benchmark's.
    ::posix_spawn_file_actions_addopen(&actions, 1, "/dev/null", O_WRONLY, 0);
    const int error = ::posix_spawn(&m_pid, command[0].c_str(), &actions, nullptr,
                                    Pointers(command).data(), Pointers(environment).data());
    ::posix_spawn_file_actions_destroy(&actions);
    if (error != 0) {
        throw std::system_error(error, std::generic_category(), command[0]);
    }
}

Program::~Program()
{
    if (m_pid > 0) {
        ::kill(m_pid, SIGKILL);
        ::waitpid(m_pid, nullptr, 0);
    }
}

void Program::Join()
{
    int status = 0;
    ::waitpid(std::exchange(m_pid, -1), &status, 0);
    if (status != 0) {
        throw std::runtime_error("a program did not do its work");
    }
}

void Program::Terminate()
{
    const pid_t pid = std::exchange(m_pid, -1);
    ::kill(pid, SIGTERM);
    ::waitpid(pid, nullptr, 0);
}

std::chrono::nanoseconds Program::CpuTime() const
{
    clockid_t clock{};
    timespec time{};
    if (::clock_getcpuclockid(m_pid, &clock) != 0 || ::clock_gettime(clock, &time) != 0) {
        throw std::runtime_error("a measured program has ended");
    }
    return std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec);
}

Memory Program::ReadMemory() const
{
    const auto file = ProcOf(m_pid) / "smaps_rollup";
    return {SumOf(file, "Rss"), SumOf(file, "Pss"), SumOf(file, "Private_Dirty")};
}

std::uint64_t Program::CountSleeps() const
{
    std::uint64_t sleeps = 0;
    for (const auto& thread : std::filesystem::directory_iterator(ProcOf(m_pid) / "task")) {
        sleeps += SumOf(thread.path() / "status", "voluntary_ctxt_switches");
    }
    return sleeps;
}

void LayOutRoot(const std::filesystem::path& root)
{
    const auto store = root / "mnt/nv/product-persistence";
    std::filesystem::create_directories(root / "run/orlu");
    std::filesystem::permissions(root / "run/orlu", std::filesystem::perms::owner_all);
    std::filesystem::create_directories(store);
    std::ofstream(store / "TRSCodesetConfig.json") << kStore;
}

}  // namespace Bench
