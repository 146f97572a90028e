// SPDX-License-Identifier: Apache-2.0

#include <csignal>
#include <filesystem>
#include <memory>

#include <gtest/gtest.h>

#include "process/Program.h"

namespace ProcessTests {
namespace {

constexpr const char* kStoreFolder = "/mnt/nv/product-persistence";

/// A product with the programs that a test starts.
class ServiceProcessTest : public testing::Test {
protected:
    ServiceProcessTest()
    {
        m_folder.Write("/opt/Orlu/etc/MfgData.json", R"({"productType": "marlow-tenpenny"})");
        std::filesystem::create_directories(m_folder.Path() + kStoreFolder);
        std::filesystem::copy(STORE_FILE, m_folder.Path() + kStoreFolder);
    }

    void StartService()
    {
        m_service = std::make_unique<Program>(m_folder, "TrellanService", Arguments{});
        Controller({"cloud"});
    }

    void StartBoth()
    {
        m_lpm = std::make_unique<Program>(m_folder, "LpmService",
                                          Arguments{"--codesets", CODESET_FOLDER, "--devices",
                                                    DEVICES_FILE, "--record", "/dev/stdout"});
        m_lpm->WaitForLine("ready");
        StartService();
        m_service->WaitForLog("KeyHandler: TRS lpmClient connected");
    }

    void StartAndSync()
    {
        StartBoth();
        Controller({"sources", "T2051", "S0456", "Y0812"});
        m_service->WaitForLog("The codesets match, we can send keys");
    }

    std::string Controller(const Arguments& words)
    {
        return RunProgram(m_folder, "ProductController", words);
    }

    std::string Console(const Arguments& words, int code = 0)
    {
        return RunProgram(m_folder, "OrluConsole", words, code);
    }

    TemporaryRoot m_folder;
    std::unique_ptr<Program> m_lpm;
    std::unique_ptr<Program> m_service;
};

TEST_F(ServiceProcessTest, APressedKeyMovesTheTelevision)
{
    StartAndSync();
    const std::string answer = Controller({"key", "T2051", "orlu_TV_power"});
    EXPECT_NE(answer.find("PASS"), std::string::npos) << answer;
    m_lpm->WaitForLine(R"("id": 80, "frame": "000701080301800000"})");
    EXPECT_NE(m_lpm->WaitForLine("\"state\"").find("television"), std::string::npos);
    m_lpm->WriteLine("not JSON");
    m_lpm->WaitForLog("A line of input is not understood");
}

TEST_F(ServiceProcessTest, TheBlasterIsNotLeftSendingWhenTheServiceIsKilled)
{
    StartAndSync();
    const Program key(m_folder, "ProductController", {"key", "T2051", "hdmi_1", "--hold", "60000"});
    const auto ms = [](const std::string& line) {
        return std::stod(line.substr(line.find(' ')));
    };
    const double begun = ms(m_lpm->WaitForLine(R"("on": true)"));
    m_service->Signal(SIGKILL);
    EXPECT_LE(ms(m_lpm->WaitForLine(R"("on": false)")) - begun, 250.0);
}

TEST_F(ServiceProcessTest, AFaultIsLoggedBetweenTwoBannersAndEndsTheProcess)
{
    StartService();
    m_service->Signal(SIGSEGV);
    m_service->WaitForLog("------- TrellanService Segmentation Fault Start --------");
    m_service->WaitForLog("main");
    m_service->WaitForLog("-------- TrellanService Segmentation Fault End ---------");
    EXPECT_EQ(m_service->WaitForEnd(), -SIGSEGV);
}

TEST_F(ServiceProcessTest, ThereIsOnlyOne)
{
    StartService();
    Program second(m_folder, "TrellanService", {});
    EXPECT_EQ(second.WaitForEnd(), 1);
    EXPECT_NE(second.Log().find(" 1 SystemUtils: another "), std::string::npos) << second.Log();
    Controller({"cloud"});
}

TEST_F(ServiceProcessTest, EachCommandAnswers)
{
    StartBoth();
    const std::pair<Arguments, const char*> rows[] = {
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
    for (const auto& [arguments, answer] : rows) {
        Arguments words{"trs"};
        words.insert(words.end(), arguments.begin(), arguments.end());
        EXPECT_TRUE(Console(words).starts_with(answer)) << arguments.front();
    }
    EXPECT_EQ(Console({"trs", "no_such"}, 1), "Unrecognized command\n");
    EXPECT_TRUE(
        Console({"help", "get_version"}).ends_with("Reports the version of TrellanService\n"));
    Console({"help", "no_such"}, 1);
    Console(Arguments(17, "a"), 2);
    Console({"--no-such"}, 2);
}

TEST_F(ServiceProcessTest, LinesFromAPipeAreRunToTheLast)
{
    StartService();
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

TEST_F(ServiceProcessTest, AnInterruptedWaitLeavesTheServiceAsItWas)
{
    StartBoth();
    Program idle(m_folder, "OrluConsole", {});
    idle.WriteLine("trs no_such");
    idle.WaitForLine("Unrecognized command");
    idle.Signal(SIGTERM);
    EXPECT_EQ(idle.WaitForEnd(), 0);

    m_lpm->Signal(SIGSTOP);
    Program waiting(m_folder, "OrluConsole", {"trs", "list_codesets"});
    m_service->WaitForLog("Command trs list_codesets");
    Program behind(m_folder, "OrluConsole", {"trs", "get_version"});
    // The blocked command line delays only the consoles.
    Controller({"cloud"});
    waiting.Signal(SIGINT);
    EXPECT_EQ(waiting.WaitForEnd(), 0);
    m_lpm->Signal(SIGCONT);
    behind.WaitForLine("3.1.72");
    EXPECT_EQ(behind.WaitForEnd(), 0);
    EXPECT_EQ(Console({"trs", "list_codesets"}), "0x0803 0x31c8 0x632c \n");

    m_lpm->Signal(SIGSTOP);
    Program lost(m_folder, "OrluConsole", {"trs", "list_codesets"});
    m_service->WaitForLog("Command trs list_codesets");
    m_lpm->Signal(SIGKILL);
    lost.WaitForLine("Command failed");

    m_service->Signal(SIGTERM);
    m_service->WaitForEnd();
    Console({"trs", "get_version"}, 3);
}

}  // namespace
}  // namespace ProcessTests
