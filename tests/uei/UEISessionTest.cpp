// SPDX-License-Identifier: Apache-2.0

#include <json/value.h>

#include "uei/UEIFixture.h"

namespace TrellanService::Tests {
namespace {

constexpr const char* kConfig = "/opt/Orlu/etc/UEI/WRLD_linux.conf";

class UEISession : public UEIFixture {};

TEST_F(UEISession, StartsTheLibraryInOrderForTheProduct)
{
    EXPECT_EQ(Init("DE", "12345"), 0);
    EXPECT_EQ(effects.Take(),
              "+0 qsp stop\n"
              "+0 qsp set_host_log_function\n"
              "+0 qsp set_log_level 50\n"
              "+0 qsp set_online_vector k7#Vq!2xZ(9dLr&T\n"
              "+0 qsp set_online_unique_id 12345\n"
              "+0 qsp start /opt/Orlu/etc/UEI/WRLD_linux.conf\n"
              "+0 qsp set_host_callback_function\n"
              "+0 qsp set_callback_httppost\n");
    EXPECT_EQ(TakeLog(),
              "3 OSM country code from mfg data is DE\n"
              "3 Setting serial number to 12345\n"
              "3 OSM TRConfigFile: /opt/Orlu/etc/UEI/WRLD_linux.conf UserID: 12345 country DE\n");
    EXPECT_EQ(qsp.post, &UEIInterface::HttpPost);

    EXPECT_EQ(Init("", "1234"), 0);
    EXPECT_EQ(TakeLog(),
              "3 OSM - Could not read country - using default\\n\n"
              "3 OSM TRConfigFile: /opt/Orlu/etc/UEI/WRLD_linux.conf UserID: 58203917461125QZX "
              "country US\n");
}

TEST_F(UEISession, EndsTheStartAtTheFirstStepThatCounts)
{
    struct Row {
        const char* function;
        int result;
        const char* last;
    };
    constexpr std::array<Row, 8> kRows = {{
        {"stop", 0, "+0 qsp set_callback_httppost\n"},
        {"set_host_log_function", -1, "+0 qsp set_host_log_function\n"},
        {"set_log_level", 0, "+0 qsp set_callback_httppost\n"},
        {"set_online_vector", 0, "+0 qsp set_callback_httppost\n"},
        {"set_online_unique_id", -1, "+0 qsp set_online_unique_id 58203917461125QZX\n"},
        {"start", -1, "+0 qsp start /opt/Orlu/etc/UEI/WRLD_linux.conf\n"},
        {"set_host_callback_function", -1, "+0 qsp set_host_callback_function\n+0 qsp stop\n"},
        {"set_callback_httppost", -1, "+0 qsp set_callback_httppost\n+0 qsp stop\n"},
    }};
    for (const Row& row : kRows) {
        SCOPED_TRACE(row.function);
        qsp.results = {{row.function, 7}};
        EXPECT_EQ(Init(), row.result);
        const std::string calls = effects.Take();
        EXPECT_TRUE(calls.ends_with(row.last)) << calls;
    }
}

TEST_F(UEISession, StaysOpenUntilAnotherKindIsWanted)
{
    struct Row {
        std::uint32_t kind;
        const char* calls;
    };
    constexpr std::array<Row, 7> kRows = {{
        {0, "+0 qsp get_lookup_session /opt/Orlu/etc/UEI/WRLD_linux.conf 2\n"},
        {2, ""},
        {0, ""},
        {1,
         "+0 qsp release_lookup_session\n"
         "+0 qsp get_lookup_session /opt/Orlu/etc/UEI/WRLD_linux.conf 1\n"},
        {0, ""},
        {9,
         "+0 qsp release_lookup_session\n"
         "+0 qsp get_lookup_session /opt/Orlu/etc/UEI/WRLD_linux.conf 3\n"},
        {9, ""},
    }};
    Init();
    effects.Take();
    for (const Row& row : kRows) {
        SCOPED_TRACE(row.kind);
        EXPECT_EQ(engine.OpenSession(row.kind), 0);
        EXPECT_EQ(effects.Take(), row.calls);
    }
    Init();
    EXPECT_TRUE(effects.Take().starts_with("+0 qsp release_lookup_session\n+0 qsp stop\n"));
}

TEST_F(UEISession, IsTriedAgainAfterAFailure)
{
    const std::string call = std::string("+0 qsp get_lookup_session ") + kConfig + " 2\n";
    Init();
    effects.Take();
    TakeLog();
    qsp.results = {{"get_lookup_session", 9}};
    EXPECT_FALSE(engine.TestConnection());
    EXPECT_FALSE(engine.TestConnection());
    EXPECT_EQ(effects.Take(), call + call);
    EXPECT_TRUE(
        TakeLog().starts_with("3 Testing UEI connection by opening UEI session\n"
                              "3 Can't open session, reason code 9\n"));
    qsp.results.clear();
    EXPECT_TRUE(engine.TestConnection());
    EXPECT_TRUE(engine.TestConnection());
    EXPECT_EQ(effects.Take(), call);
}

TEST_F(UEISession, TellsTheLibrarysVersion)
{
    Init();
    Json::Value version;
    qsp.texts["get_version_string"] = "4.2";
    EXPECT_EQ(engine.GetVersion(version, 2), 0);
    EXPECT_EQ(version["TRVersion"].asString(), "4.2");
    TakeLog();

    version.clear();
    qsp.results["get_version_string"] = 5;
    EXPECT_EQ(engine.GetVersion(version, 2), -1);
    EXPECT_EQ(TakeLog(), "3 get TR version 5\n");
    qsp.results["get_lookup_session"] = 9;
    EXPECT_EQ(engine.GetVersion(version, 1), -1);
    EXPECT_FALSE(version.isMember("TRVersion"));
}

}  // namespace
}  // namespace TrellanService::Tests
