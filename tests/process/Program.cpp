// SPDX-License-Identifier: Apache-2.0

#include "process/Program.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <utility>

#include <fcntl.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

namespace ProcessTests {

namespace {

constexpr auto kTimeout = std::chrono::seconds(30);

}  // namespace

Program::Program(const TemporaryRoot& folder, const std::string& name, const Arguments& arguments)
    : m_name(name)
{
    std::array<std::array<int, 2>, 3> pipes{};
    for (auto& ends : pipes) {
        EXPECT_EQ(pipe2(ends.data(), O_CLOEXEC), 0);
    }
    Arguments words{std::string(PROGRAM_FOLDER) + "/" + name};
    words.insert(words.end(), arguments.begin(), arguments.end());
    std::vector<char*> argv;
    for (std::string& word : words) {
        argv.push_back(word.data());
    }
    argv.push_back(nullptr);
    m_pid = fork();
    if (m_pid == 0) {
        dup2(pipes[0][0], STDIN_FILENO);
        dup2(pipes[1][1], STDOUT_FILENO);
        dup2(pipes[2][1], STDERR_FILENO);
        clearenv();
        setenv("ORLU_ROOT", folder.Path().c_str(), 1);
        setenv("ORLU_PORTICO_PORT", "1", 1);  // a port without a listener
        execv(argv[0], argv.data());
        _exit(127);
    }
    for (const int end : {pipes[0][0], pipes[1][1], pipes[2][1]}) {
        close(end);
    }
    m_in = pipes[0][1];
    m_out.fd = pipes[1][0];
    m_err.fd = pipes[2][0];
}

Program::~Program()
{
    if (m_pid > 0) {
        kill(m_pid, SIGKILL);
        waitpid(m_pid, nullptr, 0);
    }
    for (const int fd : {m_in, m_out.fd, m_err.fd}) {
        close(fd);
    }
}

std::string Program::WaitFor(Stream& stream, const std::string& part)
{
    const auto deadline = std::chrono::steady_clock::now() + kTimeout;
    do {
        if (const auto line = TakeLine(stream, part)) {
            return *line;
        }
    } while (ReadMore(deadline));
    ADD_FAILURE() << m_name << ": no line with \"" << part << "\"; it wrote:\n"
                  << m_out.all << m_err.all;
    return {};
}

std::optional<std::string> Program::TakeLine(Stream& stream, const std::string& part)
{
    for (std::size_t end = 0; (end = stream.all.find('\n', stream.taken)) != std::string::npos;) {
        const std::string line = stream.all.substr(stream.taken, end - stream.taken);
        stream.taken = end + 1;
        if (line.find(part) != std::string::npos) {
            return line;
        }
    }
    return std::nullopt;
}

bool Program::ReadMore(std::chrono::steady_clock::time_point deadline)
{
    const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
        deadline - std::chrono::steady_clock::now());
    // A stream that has ended is -1, which poll ignores.
    std::array<pollfd, 2> polled{{{m_out.fd, POLLIN, 0}, {m_err.fd, POLLIN, 0}}};
    if ((m_out.fd < 0 && m_err.fd < 0) || left.count() <= 0 ||
        poll(polled.data(), polled.size(), static_cast<int>(left.count())) <= 0) {
        return false;
    }
    for (Stream* stream : {&m_out, &m_err}) {
        std::array<char, 65536> buffer{};
        if (polled[stream == &m_out ? 0 : 1].revents == 0) {
            continue;
        }
        const ssize_t count = read(stream->fd, buffer.data(), buffer.size());
        if (count > 0) {
            stream->all.append(buffer.data(), static_cast<std::size_t>(count));
        } else if (count == 0 || errno != EINTR) {
            close(std::exchange(stream->fd, -1));
        }
    }
    return true;
}

void Program::WriteLine(const std::string& line) const
{
    const std::string text = line + "\n";
    EXPECT_EQ(write(m_in, text.data(), text.size()), static_cast<ssize_t>(text.size()));
}

void Program::Signal(int number) const
{
    EXPECT_EQ(kill(m_pid, number), 0);
}

int Program::WaitForEnd()
{
    close(std::exchange(m_in, -1));
    const auto deadline = std::chrono::steady_clock::now() + kTimeout;
    while (ReadMore(deadline)) {
    }
    if (m_out.fd >= 0 || m_err.fd >= 0) {
        ADD_FAILURE() << m_name << " does not end; it wrote:\n" << m_out.all << m_err.all;
        kill(m_pid, SIGKILL);
    }
    int status = 0;
    waitpid(m_pid, &status, 0);
    m_pid = -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}

std::string RunProgram(const TemporaryRoot& folder, const std::string& name,
                       const Arguments& arguments, int code)
{
    Program program(folder, name, arguments);
    EXPECT_EQ(program.WaitForEnd(), code) << name << " wrote:\n"
                                          << program.Output() << program.Log();
    return program.Output();
}

}  // namespace ProcessTests
