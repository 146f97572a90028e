// SPDX-License-Identifier: Apache-2.0

#include <fmt/format.h>

#include "uei/UEIFixture.h"

using namespace TrellanServiceMessages;

namespace TrellanService::Tests {
namespace {

/// A library whose guided test for televisions of Acme asks for T0001 and then T0002.
class GuidedTest : public UEIFixture {
protected:
    GuidedTest()
    {
        Init();
        proxy.Initialize();
        qsp.binaries = {{"T0001", "a"}, {"T0002", "b"}};
        qsp.lists = {{"get_device_type_name", {"TV"}}, {"get_brand_name", {"Acme"}}};
        qsp.numbers = {{"osm_retrieve_test_keys_total", {3}}, {"osm_get_first_test_key", {1}},
                       {"osm_get_next_test_key", {6}},        {"osm_report_test_result", {1}},
                       {"osm_retrieve_codesets_total", {2}},  {"osm_get_codesets_tested", {1}}};
        qsp.textLists = {{"osm_get_current_codeset_name", {"T0001", "T0002,T0003"}}};
        runtime.RunUntilIdle();
        engine.OpenSession(2);
        effects.Take();
        TakeLog();
    }

    UEIInterface::OSMCallback Note()
    {
        return [this](const OSMControlResp_t& r) {
            effects.Add(fmt::format("{}{} {} {} of {}, {} keys, next {}",
                                    r.sessionactive() ? "active " : "", r.lastresult(), r.cicode(),
                                    r.numcompleted(), r.numtested(), r.totalkeys(),
                                    r.nextkeytotest()));
        };
    }

    std::string Start(const std::string& type = "DEVICE_TYPE_TV")
    {
        OSMControlMsg_t request;
        request.set_devicetype(type);
        request.set_devicebrand("Acme");
        return Run([this, request] { engine.OSMStart(request, Note()); });
    }
    std::string SendKey()
    {
        return Run([this] { engine.OSMSendKey(Note()); });
    }
    std::string Respond(bool worked)
    {
        return Run([this, worked] { engine.OSMUserResponse(worked, Note()); });
    }
};

TEST_F(GuidedTest, GoesFromCodesetToCodesetUntilOneIsFound)
{
    EXPECT_EQ(Start(),
              "+0 qsp retrieve_device_types_total\n"
              "+0 qsp retrieve_brands_total TV Acme 1\n"
              "+0 qsp osm_retrieve_test_keys_total TV Acme\n"
              "+0 qsp osm_get_first_test_key\n"
              "+0 qsp osm_get_current_codeset_name\n"
              "+0 qsp register_ir_callbacks -----*--------\n"
              "+0 qsp send_codeset_by_name T0001 2\n"
              "+0 lpm 65539 length 6 type 2 000422000161\n"
              "+0 active LAST_RESULT_CONTINUE T0001 0 of 0, 3 keys, next O_KEY_POWER\n");
    EXPECT_EQ(SendKey(),
              "+0 lpm 80 000701000101800000\n"
              "+0 active LAST_RESULT_CONTINUE T0001 0 of 0, 3 keys, next O_KEY_POWER\n");
    EXPECT_EQ(Respond(false),
              "+0 qsp osm_report_test_result 1\n"
              "+0 qsp osm_retrieve_codesets_total\n"
              "+0 qsp osm_get_codesets_tested\n"
              "+0 qsp osm_get_next_test_key\n"
              "+0 qsp osm_get_current_codeset_name\n"
              "+0 lpm 80 00030c0001\n"
              "+0 qsp register_ir_callbacks -----*--------\n"
              "+0 qsp send_codeset_by_name T0002 2\n"
              "+0 lpm 65539 length 6 type 2 000422000262\n"
              "+0 active LAST_RESULT_CONTINUE T0002 1 of 2, 3 keys, next O_KEY_VOLUME_UP\n");
    qsp.numbers["osm_get_next_test_key"] = {7};
    EXPECT_EQ(Respond(true),
              "+0 qsp osm_report_test_result 0\n"
              "+0 qsp osm_retrieve_codesets_total\n"
              "+0 qsp osm_get_codesets_tested\n"
              "+0 qsp osm_get_next_test_key\n"
              "+0 qsp osm_get_current_codeset_name\n"
              "+0 active LAST_RESULT_CONTINUE T0002 1 of 2, 3 keys, next O_KEY_VOLUME_DOWN\n");
    qsp.numbers["osm_report_test_result"] = {2};
    EXPECT_EQ(Respond(true),
              "+0 qsp osm_report_test_result 0\n"
              "+0 qsp osm_retrieve_codesets_total\n"
              "+0 qsp osm_get_codesets_tested\n"
              "+0 qsp osm_get_current_codeset_name\n"
              "+0 active LAST_RESULT_SUCCESS T0002,T0003 0 of 0, 0 keys, next O_KEY_INVALID\n");
    EXPECT_EQ(Run([this] { engine.OSMComplete(Note()); }),
              "+0 LAST_RESULT_NONE T0002,T0003 0 of 0, 0 keys, next O_KEY_INVALID\n");
    TakeLog();
    EXPECT_EQ(SendKey(), "+0 LAST_RESULT_ERROR T0002,T0003 0 of 0, 0 keys, next O_KEY_INVALID\n");
    EXPECT_EQ(TakeLog(), "3 OSM not started\n");
}

TEST_F(GuidedTest, AnAnswerHoldsNothingOfBefore)
{
    OSMControlResp_t response;
    response.mutable_properties()->add_supportedactions("once");
    engine.FillOSMControlResp(response);
    EXPECT_EQ(response.properties().supportedactions_size(), 5);
}

TEST_F(GuidedTest, AStartThatFailsAnswersWithTheStateOfBefore)
{
    struct Row {
        const char* function;  ///< The library's function that fails or returns `number`.
        std::int32_t number;
        const char* log;
        const char* result = "LAST_RESULT_ERROR";
    };
    constexpr std::int32_t kFails = 1000;
    constexpr const char* kStarted = "3 OSMStart: TV/Acme\n";
    for (const Row& row :
         {Row{"retrieve_device_types_total", kFails,
              "2 Unable to load device type in session cache\n"},
          Row{"retrieve_brands_total", kFails, "2 Unable to load device brand in session cache\n"},
          Row{"osm_retrieve_test_keys_total", kFails, "3 No OSM for this device\n",
              "LAST_RESULT_SUCCESS"},
          Row{"osm_retrieve_test_keys_total", 0, "3 No keys to test\n"},
          Row{"osm_get_first_test_key", kFails,
              "3 TestKeysTotal: 3\n2 Unable to get test key from UEI\n"},
          Row{"osm_get_first_test_key", -1,
              "3 TestKeysTotal: 3\n2 Unable to get valid test key from UEI\n"},
          Row{"osm_get_current_codeset_name", kFails,
              "3 TestKeysTotal: 3\n2 Unable to get codeset name from UEI\n"}}) {
        SCOPED_TRACE(row.log);
        Init();
        effects.Take();
        TakeLog();
        qsp.results.clear();
        const auto numbers = qsp.numbers;
        if (row.number == kFails) {
            qsp.results[row.function] = row.number;
        } else {
            qsp.numbers[row.function] = {row.number};
        }
        const auto seen = Start();
        EXPECT_NE(seen.find(fmt::format("+0 {}  0 of 0, 0 keys, next O_KEY_INVALID\n", row.result)),
                  std::string::npos)
            << seen;
        EXPECT_EQ(TakeLog(), kStarted + std::string(row.log));
        EXPECT_TRUE(engine.IsOSMActive());
        qsp.numbers = numbers;
    }
    qsp.results.clear();
    EXPECT_TRUE(Start("DEVICE_TYPE_TOASTER").find("active LAST_RESULT_ERROR") != std::string::npos);
    EXPECT_EQ(TakeLog(), "3 OSMStart: no mapping for device type DEVICE_TYPE_TOASTER\n");
    qsp.textLists["osm_get_current_codeset_name"] = {"X1"};
    Start();
    EXPECT_TRUE(TakeLog().ends_with("3 UEI returned invalid codeset name \n"));
}

TEST_F(GuidedTest, AResponseEndsAsTheLibrarySays)
{
    struct Row {
        const char* function;
        int result;
        std::int32_t status;
        const char* answer;
        const char* log;
    };
    const std::vector<Row> rows = {
        {"osm_report_test_result", 7, 1, "LAST_RESULT_ERROR T0001 0 of 0, 3 keys, next O_KEY_POWER",
         "3 OSM error in reporting test result 7\n"},
        {"osm_retrieve_codesets_total", 7, 1,
         "LAST_RESULT_ERROR T0001 0 of 0, 3 keys, next O_KEY_POWER",
         "3 OSM error in retrieving num codesets totoal 7\n"},
        {"osm_get_codesets_tested", 7, 1,
         "LAST_RESULT_ERROR T0001 0 of 0, 3 keys, next O_KEY_POWER",
         "3 OSM error in getting num codesets tested 7\n"},
        {"", 0, -1, "LAST_RESULT_ERROR  0 of 0, 0 keys, next O_KEY_INVALID",
         "3 OSM: Testing 1/2 completed\n1 Test result error\n"},
        {"osm_report_test_result", 4, 3, "LAST_RESULT_SUCCESS  0 of 0, 0 keys, next O_KEY_INVALID",
         "3 OSM: Testing 1/2 completed\n3 Testing done, no codeset found\n"},
        {"osm_get_next_test_key", 7, 1, "LAST_RESULT_ERROR T0001 0 of 0, 3 keys, next O_KEY_POWER",
         "3 OSM: Testing 1/2 completed\n3 OSM: Getting next key\n1 OSM error get next key 7\n"},
        {"osm_get_current_codeset_name", 7, 0,
         "LAST_RESULT_ERROR T0001 1 of 2, 3 keys, next O_KEY_VOLUME_UP",
         "3 OSM: Testing 1/2 completed\n3 Validating codeset name T0001\n"
         "1 OSM error getting codeset name 7\n"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.log);
        Init();
        qsp.results.clear();
        qsp.textLists = {{"osm_get_current_codeset_name", {"T0001"}}};
        Start();
        TakeLog();
        qsp.results[row.function] = row.result;
        qsp.numbers["osm_report_test_result"] = {row.status};
        const auto seen = Respond(false);
        EXPECT_TRUE(seen.ends_with(std::string("+0 active ") + row.answer + "\n")) << seen;
        EXPECT_EQ(TakeLog(), row.log);
    }
    qsp.results.clear();
    qsp.numbers["osm_report_test_result"] = {1};
    qsp.textLists = {{"osm_get_current_codeset_name", {"X1"}}};
    EXPECT_TRUE(Respond(false).ends_with(
        "+0 active LAST_RESULT_ERROR X1 1 of 2, 3 keys, next O_KEY_VOLUME_UP\n"));
    // A name that is null behind a success counts as none.
    qsp.textLists.clear();
    qsp.texts["osm_get_current_codeset_name"] = ScriptedQsp::kNull;
    qsp.results.clear();
    qsp.numbers["osm_report_test_result"] = {1};
    Respond(true);
    TakeLog();
    EXPECT_TRUE(Respond(true).starts_with("+0 active LAST_RESULT_ERROR"));
    EXPECT_EQ(engine.OSMCancel(), 0);
    TakeLog();
    EXPECT_EQ(Respond(true), "+0 LAST_RESULT_ERROR  0 of 0, 0 keys, next O_KEY_INVALID\n");
    EXPECT_EQ(TakeLog(),
              "1 Sending a user response with no previous codeset, should not be here\n");
    engine.OSMCancel();
    EXPECT_EQ(TakeLog(), "3 OSM not started\n");
}

TEST_F(GuidedTest, FailuresOfTheBlasterReachTheClient)
{
    Start();
    lpm.ReplyToAll(std::string("\x01\x07", 2));
    TakeLog();
    EXPECT_TRUE(
        SendKey().ends_with("active LAST_RESULT_ERROR T0001 0 of 0, 3 keys, next O_KEY_POWER\n"));
    EXPECT_TRUE(TakeLog().ends_with("3 Send key status = 7\n2 Send key to blaster failed\n"));
    // The blaster refuses the delete and the load behind it.
    EXPECT_TRUE(Respond(false).ends_with(
        "+0 lpm 65539 length 6 type 2 000422000262\n"
        "+0 active LAST_RESULT_ERROR T0002 1 of 2, 3 keys, next O_KEY_VOLUME_UP\n"));
    qsp.binaries.clear();
    qsp.textLists["osm_get_current_codeset_name"] = {"T0001"};
    EXPECT_TRUE(
        Respond(false).ends_with("send_codeset_by_name T0001 2\n"
                                 "+0 active LAST_RESULT_ERROR T0001 1 of 2, 3 keys, next "
                                 "O_KEY_VOLUME_UP\n"));
}

}  // namespace
}  // namespace TrellanService::Tests
