// SPDX-License-Identifier: Apache-2.0

#include <csignal>
#include <filesystem>
#include <memory>

#include <gtest/gtest.h>

#include "process/Program.h"

namespace ProcessTests {
namespace {

constexpr const char* kStoreFolder = "/mnt/nv/product-persistence";

/// A product with the programs that a test wants of it.
class ServiceProcessTest : public testing::Test {
protected:
    ServiceProcessTest()
    {
        m_folder.Write("/opt/Orlu/etc/MfgData.json", R"({"productType": "marlow-tenpenny"})");
        std::filesystem::create_directories(m_folder.Path() + kStoreFolder);
        std::filesystem::copy(STORE_FILE, m_folder.Path() + kStoreFolder);
    }

    void StartLpm()
    {
        m_lpm = std::make_unique<Program>(
            m_folder, "LpmService",
            std::vector<std::string>{"--codesets", CODESET_FOLDER, "--devices", DEVICES_FILE,
                                     "--record", "/dev/stdout"});
        m_lpm->WaitForLine("ready");
    }

    void StartService()
    {
        m_service = std::make_unique<Program>(m_folder, "TrellanService", Arguments{});
        Ask();
    }

    void Ask() { RunProgram(m_folder, "ProductController", {"cloud"}); }

    void SendSources(const Arguments& names)
    {
        Arguments arguments{"sources"};
        arguments.insert(arguments.end(), names.begin(), names.end());
        RunProgram(m_folder, "ProductController", arguments);
    }

    void StartAndSync(const Arguments& names)
    {
        StartLpm();
        StartService();
        m_service->WaitForLog("KeyHandler: TRS lpmClient connected");
        SendSources(names);
        m_service->WaitForLog("The codesets match, we can send keys");
    }

    static double MsOf(const std::string& line)
    {
        return std::stod(line.substr(line.find(' ')));
    }

    TemporaryRoot m_folder;
    std::unique_ptr<Program> m_lpm;
    std::unique_ptr<Program> m_service;
};

TEST_F(ServiceProcessTest, APressedKeyMovesTheTelevision)
{
    StartAndSync({"T2051", "S0456", "Y0812"});
    const std::string answer =
        RunProgram(m_folder, "ProductController", {"key", "T2051", "orlu_TV_power"});
    EXPECT_NE(answer.find("PASS"), std::string::npos) << answer;
    m_lpm->WaitForLine(R"("id": 80, "frame": "000701080301800000"})");
    EXPECT_NE(m_lpm->WaitForLine("\"state\"").find("television"), std::string::npos);
    m_lpm->WriteLine("not JSON");
    m_lpm->WaitForLog("A line of input is not understood");
}

TEST_F(ServiceProcessTest, TheBlasterIsNotLeftSendingWhenTheServiceIsKilled)
{
    StartAndSync({"T2051"});
    const Program key(m_folder, "ProductController", {"key", "T2051", "36", "--hold", "60000"});
    const double begun = MsOf(m_lpm->WaitForLine(R"("on": true)"));
    m_service->Signal(SIGKILL);
    EXPECT_LE(MsOf(m_lpm->WaitForLine(R"("on": false)")) - begun, 250.0);
}

TEST_F(ServiceProcessTest, PeersMayComeLaterGoAndComeBack)
{
    StartService();
    StartLpm();
    m_service->WaitForLog("KeyHandler: TRS lpmClient connected");
    m_lpm->Signal(SIGTERM);
    EXPECT_EQ(m_lpm->WaitForEnd(), 0);
    m_service->WaitForLog("Connection lost");
    StartLpm();
    m_service->WaitForLog("KeyHandler: TRS lpmClient connected");
    SendSources({"T2051"});
    m_service->WaitForLog("The codesets match, we can send keys");
    RunProgram(m_folder, "ProductController", {"key", "T2051", "36"});
    m_lpm->WaitForLine("television");
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
    Ask();
}

}  // namespace
}  // namespace ProcessTests
