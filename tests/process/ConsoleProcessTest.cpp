// SPDX-License-Identifier: Apache-2.0

#include <csignal>
#include <memory>

#include <gtest/gtest.h>

#include "process/Program.h"

namespace ProcessTests {
namespace {

/// The service, an LPM service with code sets, and consoles.
class ConsoleProcessTest : public testing::Test {
protected:
    ConsoleProcessTest()
        : m_lpm(m_folder, "LpmService", {"--codesets", CODESET_FOLDER}),
          m_service(m_folder, "TrellanService", {})
    {
        m_lpm.WaitForLine("ready");
        m_service.WaitForLog("KeyHandler: TRS lpmClient connected");
    }

    std::string Console(const Arguments& words, int code = 0)
    {
        return RunProgram(m_folder, "OrluConsole", words, code);
    }

    TemporaryRoot m_folder;
    Program m_lpm;
    Program m_service;
};

TEST_F(ConsoleProcessTest, EachCommandAnswers)
{
    struct Row {
        Arguments arguments;
        const char* answer;
    };
    const Row rows[] = {
        {{"list_codesets"}, "0x0803 0x31c8 0x632c \n"},
        {{"delete_codeset", "S0456"}, "Codeset S0456 deleted successfully: code 0x00\n"},
        {{"get_keymap", "S0456"}, "Unable to retrieve codeset S0456, error code 0x"},
        {{"store_codeset", "T2051"}, "Codeset successfully loaded in blaster\n"},
        {{"get_keymap", "T2051"}, "Codeset T2051 key map\n01 02 03 04 05 06 07 08 09 "},
        {{"send_key", "0x8c", "T2051"}, "Key sent.\n"},
        {{"end_key", "T2051"}, "End key with status 0x00\n"},
        {{"get_version"}, "3.1.72\n"},
        {{"find_cec_dev", "0", "1", "My TV"}, "Unable to retrieve CEC info from UEI cloud"},
        {{"master_reset"}, "Reset complete\n"},
        {{"list_codesets"}, "No codesets loaded in blaster\n"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.arguments.front());
        Arguments words{"trs"};
        words.insert(words.end(), row.arguments.begin(), row.arguments.end());
        EXPECT_TRUE(Console(words).starts_with(row.answer));
    }
    EXPECT_EQ(Console({"trs", "no_such"}, 1), "Unrecognized command\n");
    EXPECT_TRUE(
        Console({"help", "get_version"}).ends_with("Reports the version of TrellanService\n"));
    Console({"help", "no_such"}, 1);
    Console(Arguments(17, "a"), 2);
    Console({"--no-such"}, 2);
}

TEST_F(ConsoleProcessTest, LinesFromAPipeAreRunToTheLast)
{
    Program console(m_folder, "OrluConsole", {});
    console.WriteLine(std::string(1000000, 'x'));
    console.WriteLine("trs \"get_version");
    console.WriteLine("trs 'get_version'");
    console.WaitForLine("3.1.72");
    console.WriteLine("exit");
    EXPECT_EQ(console.WaitForEnd(), 0);
    EXPECT_NE(console.Log().find("a line has at most 4096 bytes"), std::string::npos);
    EXPECT_NE(console.Log().find("a quote does not end"), std::string::npos);
}

TEST_F(ConsoleProcessTest, AnInterruptedWaitLeavesTheServiceAsItWas)
{
    Program idle(m_folder, "OrluConsole", {});
    idle.WriteLine("trs no_such");
    idle.WaitForLine("Unrecognized command");
    idle.Signal(SIGTERM);
    EXPECT_EQ(idle.WaitForEnd(), 0);

    m_lpm.Signal(SIGSTOP);
    Program waiting(m_folder, "OrluConsole", {"trs", "list_codesets"});
    m_service.WaitForLog("Command trs list_codesets");
    Program behind(m_folder, "OrluConsole", {"trs", "get_version"});
    // The blocked command line keeps only the consoles waiting.
    RunProgram(m_folder, "ProductController", {"cloud"});
    waiting.Signal(SIGINT);
    EXPECT_EQ(waiting.WaitForEnd(), 0);
    m_lpm.Signal(SIGCONT);
    behind.WaitForLine("3.1.72");
    EXPECT_EQ(behind.WaitForEnd(), 0);
    EXPECT_EQ(Console({"trs", "list_codesets"}), "0x0803 0x31c8 0x632c \n");

    m_lpm.Signal(SIGSTOP);
    Program lost(m_folder, "OrluConsole", {"trs", "list_codesets"});
    m_service.WaitForLog("Command trs list_codesets");
    m_lpm.Signal(SIGKILL);
    lost.WaitForLine("Command failed");

    m_service.Signal(SIGTERM);
    m_service.WaitForEnd();
    Console({"trs", "get_version"}, 3);
}

}  // namespace
}  // namespace ProcessTests
