// SPDX-License-Identifier: Apache-2.0

#include <gmock/gmock.h>

#include "endpoints/EndpointsFixture.h"

namespace TrellanService {
namespace {

class Readiness : public EndpointsFixture {
protected:
    void Information(const std::string& json) { m_world.portico.Put("/system/info", json); }
    /// Changes the network status after it was read: the service gets the change as a notification.
    void Network(const char* json) { m_world.portico.Notify("/network/status", json); }

    /// The effects of starting the engine for a product with this serial number.
    static std::string Init(const std::string& identity)
    {
        return "+0 qsp stop\n"
               "+0 qsp set_host_log_function\n"
               "+0 qsp set_log_level 50\n"
               "+0 qsp set_online_vector k7#Vq!2xZ(9dLr&T\n"
               "+0 qsp set_online_unique_id " +
               identity +
               "\n+0 qsp start /opt/Orlu/etc/UEI/WRLD_linux.conf\n"
               "+0 qsp set_host_callback_function\n"
               "+0 qsp set_callback_httppost\n";
    }

    static constexpr const char* kUp = R"({"isPrimaryUp":true})";
    static constexpr const char* kDown = R"({"isPrimaryUp":false})";
    static constexpr const char* kLost = "+0 client event 7 {\"connectState\":false}\n";
};

TEST_F(Readiness, RegistersItsResourcesAndRequestsTheProducts)
{
    EXPECT_EQ(m_world.portico.Registrations(),
              "GET /remote/integration\n"
              "PUT /remote/integration\n"
              "POST /remote/integration/brandList\n"
              "PUT /remote/integration/directEntry\n"
              "interest /system/info\n"
              "interest /payload/cfg\n"
              "interest /data/udc/state\n"
              "notification /data/udc/state\n"
              "interest /network/status\n");
    EXPECT_THAT(m_world.portico.Clients(),
                testing::MatchesRegex("TrellanService localhost:8084\n"
                                      "datacollection[0-9]+-[0-9]+ localhost:8084\n"));
    m_world.PutProductValues();
    EXPECT_EQ(Effects(),
              "+0 portico GET /payload/cfg\n"
              "+0 portico GET /system/info\n"
              "+0 portico GET /network/status\n" +
                  Init("A1234"));
    EXPECT_EQ(Log(),
              "3 Registering for /payload/cfg\n"
              "3 Registering for /system/info\n"
              "3 HandleNetworkCapabilityReady\n"
              "3 HandleNetworkModuleReady: networkModuleReady=1\n"
              "3 staging directory /mnt/nv/payload\n"
              "3 HandleSysInfo\n"
              "3 HandleNetworkStatus: N/w status- (isPrimaryUp: true\\n)\n"
              "3 HandleNetworkStatus:  activated\n");
}

TEST_F(Readiness, StartsTheEngineAnewAfterEachOutage)
{
    m_world.portico.Put("/network/status", kUp);
    EXPECT_EQ(Effects(), "+0 portico GET /network/status\n");
    Information(R"({"serialNumber":"A1234"})");
    EXPECT_EQ(Effects(), "+0 portico GET /system/info\n" + Init("A1234"));
    EXPECT_EQ(Advance(1000), "+1000 client event 7 {\"connectState\":true}\n");
    Network(kUp);
    EXPECT_EQ(Effects(), "");
    Log();
    Network(kDown);
    EXPECT_EQ(Effects(), kLost);
    EXPECT_EQ(Log(),
              "3 HandleNetworkStatus: N/w status- (isPrimaryUp: false\\n)\n"
              "3 HandleNetworkStatus:  not activated s\n");
    Network(kDown);
    EXPECT_EQ(Effects(), "");
    Network(kUp);
    EXPECT_EQ(Effects(), Init("A1234"));
    Network(kDown);  // the cloud still waits: that goes on, and the next one starts the engine
    EXPECT_EQ(Effects(), "");
    Network(kUp);
    EXPECT_EQ(Effects(), Init("A1234"));
    EXPECT_EQ(Advance(1000), "+1000 client event 7 {\"connectState\":true}\n");
    Network("{}");  // a status without the member always counts
    EXPECT_EQ(Effects(), kLost);
}

TEST_F(Readiness, InformationAloneStartsNothingWhileTheNetworkIsDown)
{
    m_world.portico.Put("/network/status", kDown);
    Effects();
    Information(R"({"serialNumber":"A1234"})");
    EXPECT_EQ(Effects(), "+0 portico GET /system/info\n");
}

TEST_F(Readiness, ANamelessProductStartsByItsInformationAlone)
{
    Information("{}");
    m_world.portico.Put("/network/status", kDown);
    Effects();
    Network(kUp);
    EXPECT_EQ(Effects(), "");
    m_world.portico.Remove("/system/info");
    Information("{}");
    EXPECT_EQ(Effects(), "+0 portico GET /system/info\n" + Init("58203917461125QZX"));
}

TEST_F(Readiness, ErrorsAreLoggedAndNotRetried)
{
    constexpr const char* kError = R"({"code":503,"subcode":2,"message":"gone"})";
    m_world.portico.Fail("/system/info", kError);
    m_world.portico.Fail("/payload/cfg", kError);
    m_world.portico.Put("/network/status", "[true]");
    Advance(60000);
    EXPECT_EQ(Log(),
              "3 Registering for /system/info\n"
              "3 Registering for /payload/cfg\n"
              "3 HandleNetworkCapabilityReady\n"
              "3 HandleNetworkModuleReady: networkModuleReady=1\n"
              "1 Error 503 2 while retrieving system info\n"
              "1 PayloadCfg Error 503 2\n"
              "1 operator(): Error = (0-2005) NetworkStatus: not an object\n");
    m_world.portico.Remove("/network/status");
    Effects();
    Network(kUp);  // what was registered stays
    Effects();
    EXPECT_EQ(Log(),
              "3 HandleNetworkCapabilityNotReady\n"
              "3 HandleNetworkModuleReady: networkModuleReady=0\n"
              "3 HandleNetworkStatus: N/w status- (isPrimaryUp: true\\n)\n");
    EXPECT_EQ(m_world.service.Manager().StagingDirectory(), "");
}

}  // namespace
}  // namespace TrellanService
