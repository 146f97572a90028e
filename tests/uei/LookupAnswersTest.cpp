// SPDX-License-Identifier: Apache-2.0

#include "uei/UEIFixture.h"

using namespace TrellanServiceMessages;

namespace TrellanService::Tests {
namespace {

class LookupAnswers : public UEIFixture {
protected:
    LookupAnswers()
    {
        Init();
        proxy.Initialize();
        qsp.binaries = {{"T0001", "a"}};
        qsp.lists = {{"get_device_type_name", {"TV"}},
                     {"get_brand_name", {"Acme"}},
                     {"get_model_name", {"M1"}},
                     {"get_codeset_name", {"T0001,T0002", "T0003"}}};
        qsp.lists["discover_device_info_get"] = {"TV", "Acme", "T0001"};
        runtime.RunUntilIdle();
        effects.Take();
        TakeLog();
    }

    template <class Message>
    Callback<Message> Note()
    {
        return [this](const Message& answer) {
            effects.Add(answer.ShortDebugString());
        };
    }

    /// The answer: the last recorded line.
    std::string Enter(const std::string& type, const std::string& model, bool load)
    {
        DirectEntryReq_t request;
        request.set_devicetype(type);
        request.set_brand("Acme");
        request.set_model(model);
        const std::string all = Run([this, request, load] {
            engine.DirectEntryBrandModel(request, load, Note<DirectEntryResp_t>());
        });
        return all.substr(all.rfind("+0 ", all.size() - 2));
    }
};

TEST_F(LookupAnswers, DirectEntryTellsOrLoadsTheFirstCodeset)
{
    EXPECT_EQ(Enter("DEVICE_TYPE_TV", "M1", false),
              "+0 ciCode: \"T0001,T0002\" lastResult: \"LAST_RESULT_SUCCESS\"\n");
    EXPECT_FALSE(engine.IsOSMActive());
    EXPECT_EQ(Enter("DEVICE_TYPE_TV", "M1", true),
              "+0 deviceType: \"DEVICE_TYPE_TV\" brand: \"Acme\" model: \"M1\" ciCode: \"T0001\" "
              "lastResult: \"LAST_RESULT_SUCCESS\"\n");
    EXPECT_TRUE(engine.IsOSMActive());
    TakeLog();
    EXPECT_EQ(Enter("DEVICE_TYPE_TOASTER", "M1", true),
              "+0 deviceType: \"DEVICE_TYPE_TOASTER\" brand: \"Acme\" model: \"M1\" ciCode: "
              "\"T0001\" lastResult: \"LAST_RESULT_ERROR\"\n");
    EXPECT_EQ(TakeLog(),
              "3 DirectEntry for brand/model/type Acme/M1/DEVICE_TYPE_TOASTER\n"
              "3 DirectEntry: no mapping for device type DEVICE_TYPE_TOASTER\n");
}

TEST_F(LookupAnswers, DirectEntryFailsWhereTheLibraryOrTheBlasterDoes)
{
    constexpr const char* kBegin =
        "3 DirectEntry for brand/model/type Acme/M1/DEVICE_TYPE_TV\n"
        "3 DirectEntry UEI device type TV\n";
    qsp.results["retrieve_models_total"] = 7;
    EXPECT_NE(Enter("DEVICE_TYPE_TV", "M1", true).find("LAST_RESULT_ERROR"), std::string::npos);
    EXPECT_EQ(TakeLog(), kBegin + std::string("3 DirectEntry: GetModelCodesets returned ffffffff\n"
                                              "2 Unable to get list of codesets for Acme/M1\n"));
    qsp.results = {{"retrieve_models_total", 44}, {"get_codeset_name", 45}};
    EXPECT_NE(Enter("DEVICE_TYPE_TV", "M1", true).find("LAST_RESULT_ERROR"), std::string::npos);
    EXPECT_EQ(TakeLog(), kBegin + std::string("3 DirectEntry: GetModelCodesets returned 0\n"
                                              "2 Unable to get codeset name for Acme/M1\n"));
    qsp.results.clear();
    const auto names = std::exchange(qsp.lists["get_codeset_name"], {"X1"});
    EXPECT_NE(Enter("DEVICE_TYPE_TV", "M1", true).find("LAST_RESULT_ERROR"), std::string::npos);
    qsp.lists["get_codeset_name"] = names;
    lpm.ReplyToAll(std::string("\x01\x07", 2));
    EXPECT_NE(Enter("DEVICE_TYPE_TV", "M1", true).find("LAST_RESULT_ERROR"), std::string::npos);
    qsp.binaries.clear();
    EXPECT_NE(Enter("DEVICE_TYPE_TV", "M1", true).find("LAST_RESULT_ERROR"), std::string::npos);
    EXPECT_TRUE(TakeLog().ends_with("3 Unable to download codeset 44\n"));
    qsp.results["get_lookup_session"] = 12;
    Init();
    DirectEntryResp_t blank;
    engine.FillDirectEntryResp(blank);
    EXPECT_EQ(blank.brand() + blank.model() + blank.devicetype() + blank.cicode(), "");
    TakeLog();
    EXPECT_NE(Enter("DEVICE_TYPE_TV", "M1", false).find("LAST_RESULT_ERROR"), std::string::npos);
    EXPECT_TRUE(TakeLog().ends_with("2 Unable to open UEI cloud session\n"));
}

TEST_F(LookupAnswers, DiscoveryTellsWhatTheLibraryFound)
{
    FindCECDevice_t cec;
    cec.set_vendorid(0x5bc400);
    cec.set_logicaladdr(0x10000);
    cec.set_osd("TV");
    const auto findCec = [this, cec] {
        return Run([this, cec] { engine.FindCECDevice(cec, Note<FindCECDevice_t>()); });
    };
    const auto findEdid = [this](std::size_t size) {
        FindEDIDDevice_t edid;
        edid.set_edid(std::string(size, '\1'));
        return Run([this, edid] { engine.FindEDIDDevice(edid, Note<FindEDIDDevice_t>()); });
    };
    engine.OpenSession(2);
    effects.Take();
    EXPECT_EQ(findCec(),
              "+0 qsp discover_retrieve_info_cec 6013952 0 TV\n+0 qsp discover_device_info_get\n"
              "+0 vendorId: 6013952 logicalAddr: 65536 osd: \"TV\" deviceType: \"TV\" "
              "brand: \"Acme\" ciCode: \"T0001\" result: \"RESULT_SUCCESS\"\n");
    EXPECT_EQ(findEdid(3),
              "+0 qsp discover_retrieve_info_edid 256\n+0 qsp discover_device_info_get\n"
              "+0 brand: \"Acme\" deviceType: \"TV\" ciCode: \"T0001\" result: "
              "\"RESULT_SUCCESS\"\n");
    qsp.lists["discover_device_info_get"] = {"TV", "Acme", "T9999"};
    EXPECT_NE(findCec().find("ciCode: \"\" result: \"RESULT_SUCCESS\""), std::string::npos);
    EXPECT_NE(findEdid(1000).find("ciCode: \"T9999\""), std::string::npos);
    EXPECT_NE(TakeLog().find("3 Found EDID brand: \"Acme\"\\n"), std::string::npos);
    for (const char* function : {"discover_device_info_get", "discover_retrieve_info_cec",
                                 "discover_retrieve_info_edid", "get_lookup_session"}) {
        qsp.results[function] = 7;
        if (function == std::string("get_lookup_session")) {
            Init();
        }
        findCec();
        findEdid(256);
        qsp.results.erase("discover_device_info_get");
    }
    EXPECT_TRUE(findCec().ends_with("+0 result: \"RESULT_ERROR\"\n"));
    EXPECT_TRUE(
        TakeLog().starts_with("3 Retrieve info returned 0\n"
                              "3 discover device info get returned 7\n"
                              "1 discover device info get returned 7\n"
                              "3 Retrieve info returned 7\n"));
}

}  // namespace
}  // namespace TrellanService::Tests
