// SPDX-License-Identifier: Apache-2.0

#include "orlu/DPrint.h"

#include <array>
#include <csignal>
#include <sstream>

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "orlu/Backtrace.h"
#include "orlu/LogLine.h"
#include "orlu/LogOutput.h"
#include "support/VirtualRuntime.h"

namespace {

TEST(DPrint, ATextCannotForgeALine)
{
    const std::pair<std::string_view, const char*> rows[] = {
        {"a\n2026-01-01T00:00:00.000Z 1 X: b", "a\\n2026-01-01T00:00:00.000Z 1 X: b"},
        {"\r\t\x1b[2J\x7f", "\\r\\t\\x1b[2J\\x7f"},
        {std::string_view("\0z", 2), "\\x00z"},
        {"\xC3\xA9 \xE2\x82\xAC \xF0\x9F\x98\x80", "\xC3\xA9 \xE2\x82\xAC \xF0\x9F\x98\x80"},
        {"\xC2\x9B\x31m", "\\xc2\\x9b1m"},                        // control character above ASCII
        {"\xFF \x80 \xC3", "\\xff \\x80 \\xc3"},                  // alone
        {"\xC0\xAF \xE0\x80\xAF", "\\xc0\\xaf \\xe0\\x80\\xaf"},  // overlong
        {"\xF4\x90\x80\x80", "\\xf4\\x90\\x80\\x80"},             // beyond the last
        {"\xE2\x82", "\\xe2\\x82"},                               // cut
    };
    for (const auto& [text, expected] : rows) {
        std::string line;
        Orlu::AppendEscaped(line, text);
        EXPECT_EQ(line, expected);
    }
}

TEST(DPrint, EachByteIsEscapedAloneWhereverItStands)
{
    const std::string around = "0123456789 ~ABCDEFGHI";
    for (int byte = 0; byte < 256; ++byte) {
        const std::string one(1, static_cast<char>(byte));
        std::string escaped;
        Orlu::AppendEscaped(escaped, one);
        EXPECT_EQ(escaped == one, byte >= 0x20 && byte < 0x7F) << byte;
        for (std::size_t at = 0; at <= around.size(); ++at) {
            std::string line;
            Orlu::AppendEscaped(line, std::string(around).insert(at, one));
            EXPECT_EQ(line, std::string(around).insert(at, escaped)) << byte << " at " << at;
        }
    }
}

TEST(DPrint, TheEnvironmentPicksTheLevel)
{
    const std::pair<const char*, const char*> rows[] = {{"1", "1"},     {"2", "12"},  {"4", "1234"},
                                                        {"6", "12346"}, {"5", "123"}, {"", "123"},
                                                        {"10", "123"},  {"x", "123"}};
    static std::string written;
    DPrint::SetSink([](int, std::string_view, std::string_view text) { written += text; });
    for (const auto& [value, expected] : rows) {
        written.clear();
        DPrint::SetLevel(3);
        ::setenv("ORLU_LOG_LEVEL", value, 1);
        DPrint::ReadLevel();
        for (const int level : {1, 2, 3, 4, 6}) {
            DPrint("Any").Log(level, "{}", level);
        }
        EXPECT_EQ(written, expected) << value;
    }
    ::unsetenv("ORLU_LOG_LEVEL");
    DPrint::SetLevel(3);
    written.clear();
    DPrint("Any").Prefix("Name").Log(3, "a\n{}", 1);
    EXPECT_EQ(written, "Name: a\\n1");
    DPrint::SetSink(nullptr);
}

/// Logs inside and outside a task, with bytes written directly to standard error in between.
[[noreturn]] void LogInAndOutsideOfATask()
{
    constexpr DPrint kLog("Log");
    const auto mark = [](std::string_view text) {
        if (::write(STDERR_FILENO, text.data(), text.size()) < 0) {
            return;
        }
    };
    kLog.Log(3, "outside");
    mark("<1>\n");
    VirtualRuntime runtime;
    const Orlu::TaskQueuePtr queue = runtime.CreateTaskQueue("task");
    queue->Start([&] {
        kLog.Log(3, "gathered");
        mark("<2>\n");
        kLog.Log(1, "urgent");
        mark("<3>\n");
        kLog.Log(2, "late");
        mark("<4>\n");
    });
    runtime.RunUntilIdle();
    mark("<5>\n");
    std::exit(0);
}

TEST(DPrint, LinesOfATaskLeaveTogetherUnlessAFailureIsAmongThem)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const std::string head = "[-0-9]{10}T[:0-9]{8}[.][0-9]{3}Z ";
    EXPECT_EXIT(LogInAndOutsideOfATask(), testing::ExitedWithCode(0),
                "^" + head + "3 Log: outside\n<1>\n<2>\n" + head + "3 Log: gathered\n" + head +
                    "1 Log: urgent\n<3>\n<4>\n" + head + "2 Log: late\n<5>\n$");
}

TEST(LogOutput, AReaderThatDoesNotReadBlocksNoTaskAndLearnsOfLostLines)
{
    int ends[2];
    ASSERT_EQ(::pipe(ends), 0);
    ASSERT_GE(::fcntl(ends[0], F_SETPIPE_SZ, 4096), 0);
    ::fcntl(ends[0], F_SETFL, O_NONBLOCK);
    Orlu::LogOutput output(ends[1]);
    const std::string line(99, 'x');
    constexpr int kLines = 5000;
    for (int i = 0; i < kLines; ++i) {
        output.Write(line + "\n");
    }
    std::string all;
    for (int i = 0; i <= 100; ++i) {
        std::array<char, 65536> buffer{};
        const ssize_t count = ::read(ends[0], buffer.data(), buffer.size());
        all.append(buffer.data(), static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
        if (i < 100) {
            output.Write("next\n");
        }
    }
    EXPECT_TRUE(all.ends_with('\n'));
    int whole = 0;
    int dropped = 0;
    std::istringstream lines(all);
    for (std::string got; std::getline(lines, got);) {
        if (const std::size_t tells = got.find(" 2 DPrint: "); tells != std::string::npos) {
            dropped += std::stoi(got.substr(tells + 11));
        } else {
            EXPECT_TRUE(got == line || got == "next") << got;
            ++whole;
        }
    }
    EXPECT_GT(dropped, kLines / 2);
    EXPECT_EQ(whole + dropped, kLines + 100);
    EXPECT_EQ(::fcntl(ends[1], F_GETFL) & O_NONBLOCK, 0) << "the descriptor is others' too";
    ::close(ends[0]);
    ::close(ends[1]);
}

void TellFault(int signal)
{
    std::signal(signal, SIG_DFL);
    Orlu::FaultLog("Start", "begin");
    Orlu::FaultBacktrace("Start");
    Orlu::FaultLog("Start", "end");
}

void HangInFault(int)
{
    for (volatile bool forever = true; forever;) {
    }
}

/// Fails on a task with a line that is not written yet.
void FaultWith(void (*handler)(int))
{
    Orlu::InstallFaultHandler(handler);
    VirtualRuntime runtime;
    const Orlu::TaskQueuePtr queue = runtime.CreateTaskQueue("task");
    queue->Start([] {
        DPrint("Log").Put(3, "gathered");
        ::raise(SIGSEGV);
        // The signal is sent, not caused by a fault: only the second one has the default action.
        ::raise(SIGSEGV);
    });
    runtime.RunUntilIdle();
}

TEST(Backtrace, AFaultNamesItsFramesAndEndsTheProcess)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(FaultWith(TellFault), testing::KilledBySignal(SIGSEGV),
                "1 Start: begin\n.*Start: \\(anonymous namespace\\)::FaultWith\n.*"
                "Start: main\n.*1 Start: end\n.*3 Log: gathered\n");
    EXPECT_EXIT(FaultWith(HangInFault), testing::KilledBySignal(SIGALRM), "");
}

TEST(Backtrace, TheCallerComesFirst)
{
    const std::vector<std::string> frames = backtrace();
    ASSERT_FALSE(frames.empty());
    EXPECT_THAT(frames[0], testing::HasSubstr("TheCallerComesFirst"));
    EXPECT_THAT(frames, testing::Contains("main"));
}

}  // namespace
