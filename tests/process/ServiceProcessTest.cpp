// SPDX-License-Identifier: Apache-2.0

#include <csignal>
#include <cstring>
#include <fstream>
#include <iterator>
#include <memory>

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include "process/Program.h"

namespace ProcessTests {
namespace {

constexpr const char* kStore = "/mnt/nv/product-persistence/TRSCodesetConfig.json";

std::string ReadText(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

/// A product with the programs that a test wants of it.
class ServiceProcessTest : public testing::Test {
protected:
    ServiceProcessTest()
    {
        m_folder.Write("/opt/Orlu/etc/MfgData.json", R"({"productType": "marlow-tenpenny"})");
        m_folder.Write(kStore, ReadText(STORE_FILE));
    }

    void StartLpm()
    {
        m_lpm = std::make_unique<Program>(
            m_folder, "LpmService",
            std::vector<std::string>{"--codesets", CODESET_FOLDER, "--devices", DEVICES_FILE,
                                     "--record", m_folder.Path() + "/record"});
        m_lpm->WaitForLine("ready");
    }

    void StartService()
    {
        m_service = std::make_unique<Program>(m_folder, "TrellanService", Arguments{});
    }

    void SendSources(const Arguments& names)
    {
        Arguments arguments{"sources"};
        arguments.insert(arguments.end(), names.begin(), names.end());
        RunProgram(m_folder, "ProductController", arguments);
    }

    ProductFolder m_folder;
    std::unique_ptr<Program> m_lpm;
    std::unique_ptr<Program> m_service;
};

TEST_F(ServiceProcessTest, APressedKeyMovesTheTelevision)
{
    StartLpm();
    StartService();
    m_service->WaitForLog("TRS lpmClient connected");
    SendSources({"T2051", "S0456", "Y0812"});
    m_service->WaitForLog("The codesets match, we can send keys");

    const std::string answer =
        RunProgram(m_folder, "ProductController", {"key", "T2051", "orlu_TV_power"});
    EXPECT_NE(answer.find("PASS"), std::string::npos) << answer;
    EXPECT_NE(m_lpm->WaitForLine("\"state\"").find("television"), std::string::npos);
    EXPECT_NE(m_folder.Read("/record").find(R"("id": 80, "frame": "000701080301800000"})"),
              std::string::npos);
}

TEST_F(ServiceProcessTest, PeersMayComeLaterGoAndComeBack)
{
    StartService();
    RunProgram(m_folder, "ProductController", {"cloud"});
    StartLpm();
    m_service->WaitForLog("TRS lpmClient connected");
    m_lpm->Signal(SIGTERM);
    EXPECT_EQ(m_lpm->WaitForEnd(), 0);
    m_service->WaitForLog("Connection lost");
    StartLpm();
    m_service->WaitForLog("TRS lpmClient connected");
    SendSources({"T2051"});
    m_service->WaitForLog("The codesets match, we can send keys");
    RunProgram(m_folder, "ProductController", {"key", "T2051", "36"});
    m_lpm->WaitForLine("television");
}

TEST_F(ServiceProcessTest, DamagedFilesAreToldAndLeftAlone)
{
    m_folder.Write(kStore, "{\"codesets\": [");
    StartService();
    SendSources({});
    m_service->WaitForLog("codeset config file from disk failed markup error - ");
    m_service->WaitForLog("The codesets match, we can send keys");
    m_service->WaitForLog("Failed to load whitelist file ");
    m_service->WaitForLog("Setting send key state to 1");
    EXPECT_EQ(m_folder.Read(kStore), "{\"codesets\": [");
}

TEST_F(ServiceProcessTest, AFaultIsLoggedBetweenTwoBannersAndEndsTheProcess)
{
    StartService();
    RunProgram(m_folder, "ProductController", {"cloud"});
    m_service->Signal(SIGSEGV);
    m_service->WaitForLog("------- TrellanService Segmentation Fault Start --------");
    m_service->WaitForLog("main");
    m_service->WaitForLog("-------- TrellanService Segmentation Fault End ---------");
    EXPECT_EQ(m_service->WaitForEnd(), -SIGSEGV);
}

TEST_F(ServiceProcessTest, ThereIsOnlyOne)
{
    StartService();
    RunProgram(m_folder, "ProductController", {"cloud"});
    RunProgram(m_folder, "TrellanService", {}, 1);
    RunProgram(m_folder, "ProductController", {"cloud"});
}

/// A raw connection to the service's socket.
class RawClient {
public:
    explicit RawClient(const ProductFolder& folder) : m_fd(socket(AF_UNIX, SOCK_STREAM, 0))
    {
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        const std::string path = folder.Path() + "/run/orlu/TrellanService.sock";
        std::strncpy(address.sun_path, path.c_str(), sizeof address.sun_path - 1);
        EXPECT_EQ(connect(m_fd, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
    }
    ~RawClient() { close(m_fd); }
    RawClient(const RawClient&) = delete;
    RawClient& operator=(const RawClient&) = delete;

    void Send(const std::string& bytes) const
    {
        EXPECT_EQ(send(m_fd, bytes.data(), bytes.size(), MSG_NOSIGNAL),
                  static_cast<ssize_t>(bytes.size()));
    }
    /// Waits until the service has closed the connection.
    void WaitForClose() const
    {
        char byte = 0;
        EXPECT_LE(recv(m_fd, &byte, 1, 0), 0);
    }

private:
    int m_fd;
};

TEST_F(ServiceProcessTest, GarbageEndsItsConnectionAndNothingElse)
{
    StartService();
    RunProgram(m_folder, "ProductController", {"cloud"});
    for (const std::string& garbage :
         {std::string("\xFF\xFF\xFF\xFF", 4), std::string("\0\0\0\2\xFF\xFF", 6)}) {
        const RawClient client(m_folder);
        client.Send(garbage);
        client.WaitForClose();
    }
    {
        // A request whose client is gone before the answer is written.
        const RawClient client(m_folder);
        client.Send(std::string("\0\0\0\6\x08\x06\x10\x07\x18\x01", 10));
    }
    m_service->WaitForLog("Get the current UEI Cloud Connect status");
    RunProgram(m_folder, "ProductController", {"cloud"});
}

}  // namespace
}  // namespace ProcessTests
