// SPDX-License-Identifier: Apache-2.0

#include <fmt/format.h>

#include "endpoints/EndpointsFixture.h"
#include "orlu/DPrint.h"

namespace TrellanService {
namespace {

constexpr const char* kControl = "/remote/integration";
constexpr const char* kStart =
    R"({"action":"ACTION_START","deviceType":"DEVICE_TYPE_TV","deviceBrand":"Acme"})";
constexpr const char* kRefused =
    "+0 answer PUT /remote/integration {\"lastResult\":\"LAST_RESULT_ERROR\"}\n";
/// The effects when the blaster has the source list's code sets again.
constexpr const char* kSynced = "+1 client event 9 {\"syncState\":true}\n";
constexpr std::uint32_t kFiveMinutes = 300000;

/// The members of an answer that describe the test.
struct Progress {
    bool active;
    const char* result;
    int keys;
    int tested;
    int completed;
    const char* next;
    const char* codeset;
};

std::string Answer(const Progress& progress, const char* method = "PUT")
{
    return fmt::format(
        R"(+0 answer {} /remote/integration {{"sessionActive":{},"lastResult":"{}",)"
        R"("totalKeys":{},"numTested":{},"numCompleted":{},"nextKeyToTest":"{}","ciCode":"{}",)"
        R"("properties":{{"supportedActions":["ACTION_START","ACTION_CANCEL",)"
        R"("ACTION_USER_RESPONSE","ACTION_SEND_KEY","ACTION_COMPLETE"],)"
        R"("supportedInputRoutes":["INPUT_ROUTE_TV"]}}}})"
        "\n",
        method, progress.active, progress.result, progress.keys, progress.tested,
        progress.completed, progress.next, progress.codeset);
}

std::string Event(const char* name)
{
    return fmt::format("+0 client event 3 {{\"State\":\"TrellanService_STATE_{}_CALLED\"}}\n",
                       name);
}

/// A library with one guided test, for televisions of Acme.
class IntegrationControl : public EndpointsFixture {
protected:
    IntegrationControl()
    {
        m_world.qsp.binaries = {{"T0001", "a"}};
        m_world.qsp.lists = {{"get_device_type_name", {"TV"}}, {"get_brand_name", {"Acme"}}};
        m_world.qsp.numbers = {
            {"osm_retrieve_test_keys_total", {3}}, {"osm_get_first_test_key", {1}},
            {"osm_get_next_test_key", {6}},        {"osm_report_test_result", {1}},
            {"osm_retrieve_codesets_total", {2}},  {"osm_get_codesets_tested", {1}}};
        m_world.qsp.texts = {{"osm_get_current_codeset_name", "T0001"},
                             {"get_version_string", "3.1"}};
    }

    std::string Put(const std::string& body) { return EndpointsFixture::Put(kControl, body); }
    std::string Act(const std::string& action) { return Put("{\"action\":\"" + action + "\"}"); }
};

TEST_F(IntegrationControl, RefusesWhatItCannotDo)
{
    const Progress idle{false, "LAST_RESULT_SUCCESS", 0, 0, 0, "O_KEY_INVALID", ""};
    EXPECT_EQ(Get(kControl), Answer(idle, "GET"));
    EXPECT_EQ(Put(kStart), kRefused);
    EXPECT_EQ(Act("ACTION_CANCEL"), kRefused);
    EXPECT_EQ(Put("{}"), kRefused);
    EXPECT_EQ(Log(),
              "2 TRS request with no UEI session established\n"
              "2 TRS request with no UEI session established\n");
    ConnectCloud();

    const std::string accepted = "3 Setting OSM InactvityTimer\n3 remote integration PUT ";
    const std::string refused = Answer({false, "LAST_RESULT_ERROR", 0, 0, 0, "O_KEY_INVALID", ""});
    const std::string noDevice = "\n3 OSM: no device type and/or brand specified\n";
    const struct {
        const char* body;
        std::string answer;
        std::string log;
    } rows[] = {
        {"{}", kRefused, ""},
        {R"({"action":null,"deviceBrand":"Acme"})", kRefused, ""},
        {R"({"Action":"ACTION_START"})", kRefused, ""},
        {R"({"action":"ACTION_start"})", kRefused, accepted + "ACTION_start\n"},
        {R"({"action":"ACTION_LIST_END","more":[1]})", kRefused, accepted + "ACTION_LIST_END\n"},
        {R"({"action":"ACTION_USER_RESPONSE"})", refused, accepted + "ACTION_USER_RESPONSE\n"},
        {R"({"action":"ACTION_SEND_KEY"})", refused, accepted + "ACTION_SEND_KEY\n"},
        {R"({"action":"ACTION_START","deviceType":"DEVICE_TYPE_TV"})", refused + Event("START"),
         accepted + "ACTION_START" + noDevice},
        {R"({"action":"ACTION_START","deviceBrand":"Acme"})", refused + Event("START"),
         accepted + "ACTION_START" + noDevice},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.body);
        EXPECT_EQ(Put(row.body), row.answer);
        EXPECT_EQ(Log(), row.log);
    }
    EXPECT_TRUE(Put(R"({"action":3})")
                    .starts_with("+0 error PUT /remote/integration {\"code\":0,\"subcode\":2005,"
                                 "\"message\":\"OSMControlMsg_t"));
    EXPECT_EQ(Log(), "");
    EXPECT_EQ(KeyState(), SendKeyStartup);

    Put(R"({"action":"ACTION_USER_RESPONSE","response":"USER_RESPONSE_WORKED"})");
    EXPECT_EQ(Log("UEIInterface"),
              "1 Sending a user response with no previous codeset, should not be here\n");
}

TEST_F(IntegrationControl, DrivesATestFromStartToEnd)
{
    ConnectCloud();
    EXPECT_EQ(Put(kStart),
              "+0 qsp get_lookup_session /opt/Orlu/etc/UEI/WRLD_linux.conf 2\n"
              "+0 qsp get_version_string\n"
              R"(+0 portico POST /data/udc {"data":"{\"action\":\"ACTION_START\",)"
              R"(\"deviceType\":\"DEVICE_TYPE_TV\",\"deviceBrand\":\"Acme\",\"inputRoute\":\"\",)"
              R"(\"databaseVer\":\"3.1\"}","monoTime":"1001000",)"
              R"("time":"2023-11-14T22:13:21.000000+00:00","type":"control-integration-start"})"
              "\n+0 qsp retrieve_device_types_total\n"
              "+0 qsp retrieve_brands_total TV Acme 1\n"
              "+0 qsp osm_retrieve_test_keys_total TV Acme\n"
              "+0 qsp osm_get_first_test_key\n"
              "+0 qsp osm_get_current_codeset_name\n"
              "+0 qsp register_ir_callbacks -----*--------\n"
              "+0 qsp send_codeset_by_name T0001 2\n" +
                  Event("START") + "+0 lpm 65539 length 6 type 2 000422000161\n" +
                  Answer({true, "LAST_RESULT_CONTINUE", 3, 0, 0, "O_KEY_POWER", "T0001"}));
    EXPECT_EQ(KeyState(), SendKeyOSM);
    EXPECT_EQ(Act("ACTION_SEND_KEY"),
              "+0 lpm 80 000701000101800000\n" +
                  Answer({true, "LAST_RESULT_CONTINUE", 3, 0, 0, "O_KEY_POWER", "T0001"}));

    const Progress next{true, "LAST_RESULT_CONTINUE", 3, 2, 1, "O_KEY_VOLUME_UP", "T0001"};
    EXPECT_TRUE(
        Act("ACTION_USER_RESPONSE")
            .starts_with("+0 qsp osm_report_test_result 1\n"));  // no response: did not work
    EXPECT_TRUE(Put(R"({"action":"ACTION_USER_RESPONSE","response":"USER_RESPONSE_worked"})")
                    .starts_with("+0 qsp osm_report_test_result 1\n"));
    const std::string worked =
        Put(R"({"action":"ACTION_USER_RESPONSE","response":"USER_RESPONSE_WORKED"})");
    EXPECT_TRUE(worked.starts_with("+0 qsp osm_report_test_result 0\n"));
    EXPECT_TRUE(worked.ends_with(Answer(next)));
    EXPECT_EQ(Get(kControl), Answer(next, "GET"));

    Log();
    const Progress over{false, "LAST_RESULT_NONE", 3, 2, 1, "O_KEY_VOLUME_UP", "T0001"};
    EXPECT_EQ(Act("ACTION_COMPLETE"), Answer(over) + "+0 client event 9 {\"syncState\":false}\n" +
                                          Event("COMPLETE") +
                                          "+0 lpm 80 00020901\n"
                                          "+0 client event 9 {\"syncState\":true}\n");
    EXPECT_EQ(Log(),
              "3 Setting OSM InactvityTimer\n"
              "3 remote integration PUT ACTION_COMPLETE\n"
              "3 OSM complete received\n");
    EXPECT_EQ(KeyState(), SendKeyReady);
    EXPECT_EQ(Act("ACTION_COMPLETE"), Answer(over) + Event("COMPLETE"));
    // Without an end of the sync, keys go by CEC.
    Put(kStart);
    m_world.lpm.Reply(0x09, std::nullopt);
    Act("ACTION_COMPLETE");
    EXPECT_EQ(KeyState(), SendKeySyncPending);
    EXPECT_EQ(Advance(kFiveMinutes), "");
}

TEST_F(IntegrationControl, RecordsAStartThatTheEngineCannotFollow)
{
    ConnectCloud();
    m_world.qsp.results["get_lookup_session"] = 12;
    DPrint::SetLevel(4);
    EXPECT_EQ(Put(R"({"action":"ACTION_START","deviceType":"","deviceBrand":"","inputRoute":"R"})"),
              "+0 qsp get_lookup_session /opt/Orlu/etc/UEI/WRLD_linux.conf 2\n"
              R"(+0 portico POST /data/udc {"data":"{\"action\":\"ACTION_START\",)"
              R"(\"deviceType\":\"\",\"deviceBrand\":\"\",\"inputRoute\":\"R\",)"
              R"(\"databaseVer\":\"\"}","monoTime":"1001000",)"
              R"("time":"2023-11-14T22:13:21.000000+00:00","type":"control-integration-start"})"
              "\n+0 qsp get_lookup_session /opt/Orlu/etc/UEI/WRLD_linux.conf 2\n" +
                  Answer({false, "LAST_RESULT_ERROR", 0, 0, 0, "O_KEY_INVALID", ""}) +
                  Event("START"));
    EXPECT_EQ(Log(),
              "3 Setting OSM InactvityTimer\n"
              "3 remote integration PUT ACTION_START\n"
              R"(4 Trellan data log  {"action":"ACTION_START","deviceType":"","deviceBrand":"",)"
              R"("inputRoute":"R","databaseVer":""})"
              "\n");
    EXPECT_EQ(KeyState(), SendKeyOSM);

    m_world.qsp.results.clear();
    m_world.qsp.texts["get_version_string"] = "\xff";
    EXPECT_EQ(Put(kStart).find("portico POST"), std::string::npos);
    EXPECT_NE(Log().find("2 Trellan data log: ciStart: databaseVer is not UTF-8\n"),
              std::string::npos);
    DPrint::SetLevel(3);
}

TEST_F(IntegrationControl, EndsATestAfterFiveMinutesWithoutARequest)
{
    ConnectCloud();
    Put(kStart);
    EXPECT_EQ(Advance(kFiveMinutes - 1000), "");
    EXPECT_EQ(Put("{}"), kRefused);  // does not count
    EXPECT_EQ(Act("any"), kRefused);
    EXPECT_EQ(Advance(kFiveMinutes - 1), "");
    Log();
    EXPECT_TRUE(Advance(1).ends_with(kSynced));
    EXPECT_EQ(Log(), "3 A time out during OSM has occurred.\n");
    EXPECT_EQ(KeyState(), SendKeyReady);
    EXPECT_EQ(Get(kControl),
              Answer({false, "LAST_RESULT_ERROR", 0, 0, 0, "O_KEY_INVALID", ""}, "GET"));
    EXPECT_EQ(Advance(kFiveMinutes), "");
}

TEST_F(IntegrationControl, ACancelledTestKeepsTheBlasterUntilTheTimeOut)
{
    ConnectCloud();
    Put(kStart);
    const Progress cancelled{false, "LAST_RESULT_NONE", 3, 0, 0, "O_KEY_POWER", "T0001"};
    EXPECT_EQ(Act("ACTION_CANCEL"), Answer(cancelled) + Event("CANCEL"));
    m_world.TakeLog();
    EXPECT_EQ(Act("ACTION_CANCEL"),
              Answer({false, "LAST_RESULT_NONE", 0, 0, 0, "O_KEY_INVALID", ""}) + Event("CANCEL"));
    EXPECT_EQ(Log("UEIInterface"), "3 OSM not started\n");
    EXPECT_EQ(KeyState(), SendKeyOSM);
    EXPECT_EQ(Advance(kFiveMinutes - 1), "");
    EXPECT_TRUE(Advance(1).ends_with(kSynced));
    EXPECT_EQ(KeyState(), SendKeyReady);
}

}  // namespace
}  // namespace TrellanService
