// SPDX-License-Identifier: Apache-2.0

#include "endpoints/EndpointsFixture.h"
#include "uei/UEIInterface.h"

namespace TrellanService {
namespace {

constexpr const char* kDirectEntry = "/remote/integration/directEntry";
constexpr const char* kRequest = R"({"deviceType":"DEVICE_TYPE_TV","brand":"Acme","model":"A1"})";
constexpr const char* kRefused =
    "+0 answer PUT /remote/integration/directEntry {\"lastResult\":\"LAST_RESULT_ERROR\"}\n";

class DirectEntry : public EndpointsFixture {
protected:
    DirectEntry()
    {
        m_world.qsp.binaries = {{"T0001", "a"}};
        m_world.qsp.lists = {{"get_device_type_name", {"TV"}},
                             {"get_brand_name", {"Acme"}},
                             {"get_model_name", {"A1"}},
                             {"get_codeset_name", {"T0001"}}};
    }

    std::string Enter(const std::string& body = kRequest) { return Put(kDirectEntry, body); }
};

TEST_F(DirectEntry, RefusesNamesThatAreMissingBeforeItLooksAtTheCloud)
{
    for (const bool connected : {false, true}) {
        SCOPED_TRACE(connected);
        for (const char* body :
             {R"({"brand":"Acme","model":"A1"})", R"({"deviceType":"DEVICE_TYPE_TV","model":"A1"})",
              R"({"deviceType":"DEVICE_TYPE_TV","brand":"Acme","Model":"A1"})"}) {
            EXPECT_EQ(Enter(body), kRefused);
            EXPECT_EQ(Log(), "3 DirectEntry request malformed\n");
        }
        if (!connected) {
            EXPECT_EQ(Enter(), kRefused);
            EXPECT_EQ(Log(), "2 DirectEntry request with no UEI session established\n");
            ConnectCloud();
        }
    }
    EXPECT_NE(Enter(R"({"model":{}})").find("\"subcode\":2005"), std::string::npos);
}

TEST_F(DirectEntry, AnswersWhenTheBlasterHasTheCodeset)
{
    ConnectCloud();
    m_world.lpm.AnswerAfter(20);
    const std::string looked = Enter();
    EXPECT_TRUE(
        looked.ends_with("+0 qsp send_codeset_by_name T0001 2\n"
                         "+0 lpm 65539 length 6 type 2 000422000161\n"))
        << looked;
    EXPECT_EQ(Log(), "3 Setting OSM InactvityTimer\n3 Received direct entry request\n");
    EXPECT_EQ(Advance(20),
              "+20 answer PUT /remote/integration/directEntry {\"deviceType\":\"DEVICE_TYPE_TV\","
              "\"brand\":\"Acme\",\"model\":\"A1\",\"ciCode\":\"T0001\","
              "\"lastResult\":\"LAST_RESULT_SUCCESS\"}\n");
    EXPECT_EQ(KeyState(), SendKeyStartup);
    EXPECT_TRUE(m_world.service.Engine().IsOSMActive());

    Advance(300000 - 21);
    EXPECT_TRUE(m_world.service.Engine().IsOSMActive());
    EXPECT_EQ(Advance(1), "+1 client event 9 {\"syncState\":false}\n+1 lpm 80 00020901\n");
    EXPECT_FALSE(m_world.service.Engine().IsOSMActive());
    EXPECT_EQ(Advance(20), "+20 client event 9 {\"syncState\":true}\n");
}

TEST_F(DirectEntry, AModelThatIsNotKnownIsTheEnginesToRefuse)
{
    ConnectCloud();
    EXPECT_TRUE(Enter(R"({"deviceType":"","brand":"Acme","model":"B2"})")
                    .ends_with("+0 answer PUT /remote/integration/directEntry "
                               "{\"deviceType\":\"\",\"brand\":\"Acme\",\"model\":\"B2\","
                               "\"ciCode\":\"\",\"lastResult\":\"LAST_RESULT_ERROR\"}\n"));
    EXPECT_FALSE(m_world.service.Engine().IsOSMActive());
}

}  // namespace
}  // namespace TrellanService
