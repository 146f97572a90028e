// SPDX-License-Identifier: Apache-2.0

#include <string>
#include <utility>

#include <gtest/gtest.h>

#include "endpoints/Trellan_ServiceManager.h"
#include "support/VirtualRuntime.h"

namespace TrellanService {
namespace {

/// A manager between a server whose cloud follows what it is told and an engine that notes whom it
/// was started for.
class Readiness : public testing::Test, public ServerTaskIF, public EngineStartIF {
protected:
    APTask& GetServerTask(const std::string&) override { return m_task; }
    bool IsCloudConnected() override { return cloud; }
    void setCloudConnected(bool connected) override
    {
        events += connected ? "cloud;" : "no cloud;";
        cloud = connected;
    }
    int Init(NotifyTargetTaskIF*, const DeviceManagerPb::DeviceInfo& deviceInfo) override
    {
        events += "init " + deviceInfo.serialnumber() + ";";
        return -1;
    }

    std::string Network(std::optional<bool> up)
    {
        NetManager::Protobuf::NetworkStatus status;
        if (up) {
            status.set_isprimaryup(*up);
        }
        manager.HandleNetworkStatus(status);
        return std::exchange(events, {});
    }
    std::string Information(const char* serialNumber)
    {
        DeviceManagerPb::DeviceInfo information;
        if (serialNumber != nullptr) {
            information.set_serialnumber(serialNumber);
        }
        manager.HandleSysInfo(information);
        return std::exchange(events, {});
    }

    VirtualRuntime runtime;
    APTask m_task{"server", 0, 0, 0};
    bool cloud = false;
    std::string events;
    Trellan_ServiceManager manager{*this, *this};
};

TEST_F(Readiness, StartsTheEngineOnceTheProductIsKnownAndItsNetworkUp)
{
    EXPECT_EQ(Network(true), "");
    EXPECT_EQ(Information("A1234"), "init A1234;cloud;");
    EXPECT_EQ(Information("B1234"), "");
    EXPECT_EQ(Network(true), "");
    EXPECT_EQ(Network(false), "no cloud;");
    EXPECT_EQ(Network(false), "");
    EXPECT_EQ(Network(true), "init B1234;cloud;");
}

TEST_F(Readiness, TakesInformationAndNetworkInEitherOrder)
{
    EXPECT_EQ(Information("A1234"), "");
    EXPECT_EQ(Network(false), "");
    EXPECT_EQ(Network(true), "init A1234;cloud;");
    EXPECT_EQ(Network(std::nullopt), "no cloud;");  // one that says nothing always counts
}

TEST_F(Readiness, ANamelessProductStartsByItsInformationAlone)
{
    EXPECT_EQ(Information(nullptr), "");
    EXPECT_EQ(Network(true), "");
    EXPECT_EQ(Information(nullptr), "init ;cloud;");
}

TEST_F(Readiness, ANetworkThatFallsWhileTheCloudWaitsStopsNothing)
{
    EXPECT_EQ(Network(true), "");
    EXPECT_EQ(Information("A1234"), "init A1234;cloud;");
    cloud = false;  // as during the wait for it
    EXPECT_EQ(Network(false), "");
    EXPECT_EQ(Network(true), "init A1234;cloud;");
}

}  // namespace
}  // namespace TrellanService
