// SPDX-License-Identifier: Apache-2.0

#include <optional>

#include <gtest/gtest.h>

#include "ProtoBufs/Trellan_MessageIDs.pb.h"
#include "keys/Trellan_ServiceKeyHandler.h"
#include "support/ScriptedClient.h"
#include "support/World.h"

namespace TrellanService {
namespace {

using namespace TrellanServiceMessages;

constexpr const char* kStore = "/mnt/nv/product-persistence/TRSCodesetConfig.json";
constexpr const char* kOneCodeset = R"({"codesets": [{"name": "T2051", "details": {"devNum": 2051,
    "ambiguousKeyBitMap": 67108864, "checksum": "c", "safeToBlast": false,
    "keyMap": {"keys": [1, 4, 25]}}}]})";

/// A service with T2051 in its store and one client.
class ServerTest : public testing::Test {
protected:
    ServerTest()
    {
        m_world.root.Write(kStore, kOneCodeset);
        m_world.Start();
        m_client.emplace(m_world.effects, "client");
        Run();
        m_world.effects.Take();
        m_world.TakeLog();
    }

    void Run() { m_world.runtime.RunUntilIdle(); }

    /// All effects since the last call.
    std::string Effects()
    {
        Run();
        return m_world.effects.Take();
    }

    void SendSources(const std::vector<std::string>& names)
    {
        SrcCiCodeMessage_t message;
        message.mutable_cicode()->Assign(names.begin(), names.end());
        m_client->Send(TrellanService_MESSAGE_ID_SRC_CICODES, message);
        Run();
    }

    void RequestKey(ScriptedClient& client, std::uint32_t key, const std::string& codeset,
                    OrluKeyReqMessage_t::KeyAction_t action)
    {
        OrluKeyReqMessage_t message;
        message.set_keyval(key);
        message.set_codeset(codeset);
        message.set_keyaction(action);
        client.Request(TrellanService_MESSAGE_ID_ORLU_KEY_REQ, message);
    }

    World m_world;
    std::optional<ScriptedClient> m_client;
};

TEST(ServerWithoutASocket, SaysThatItServesNobody)
{
    World world;
    const auto task = IL::CreateTask("other", "");
    const auto taken = world.runtime.Net().Listen(
        IPCDirectory::Get().Lookup("TrellanService").Path(), task->Queue(), {});
    world.Start();
    EXPECT_NE(world.TakeLog().find("1 TrellanServer: TrellanServer serve failed.\n"),
              std::string::npos);
}

TEST_F(ServerTest, RefusesWhatNeedsTheCloudAndAnswersTheRest)
{
    FindCECDevice_t cec;
    cec.set_vendorid(0xE091);
    m_client->Request(TrellanService_MESSAGE_ID_FIND_CEC_DEV_REQ, cec);
    FindEDIDDevice_t edid;
    edid.set_edid("\xFF");
    m_client->Request(TrellanService_MESSAGE_ID_FIND_EDID_DEV_REQ, edid);
    DirectEntryResp_t entry;
    entry.set_brand("Brand");
    m_client->Request(TrellanService_MESSAGE_ID_DIRECT_ENTRY, entry);
    m_client->Request(TrellanService_MESSAGE_ID_IS_CLOUD_CONNECTED, CloudConnectState_t());
    KeyMapMessage_t keyMap;
    keyMap.set_cicode("T2051");
    m_client->Request(TrellanService_MESSAGE_ID_KEYMAP_REQ, keyMap);
    RequestKey(*m_client, 36, "", OrluKeyReqMessage_t::KEY_ACTION_SINGLE_PRESS);
    RequestKey(*m_client, 36, "T2051", OrluKeyReqMessage_t::KEY_ACTION_END_PRESS);
    EXPECT_EQ(Effects(),
              "+0 client reply 5 {\"result\":\"RESULT_ERROR\"}\n"
              "+0 client reply 10 {\"result\":\"RESULT_ERROR\"}\n"
              "+0 client reply 8 {\"lastResult\":\"LAST_RESULT_ERROR\"}\n"
              "+0 client reply 6 {\"connectState\":false}\n"
              "+0 client reply 2 {\"ciCode\":\"T2051\",\"ueiKey\":\"/w==\",\"numKeys\":0}\n"
              "+0 client reply 0 {\"keyVal\":36,\"keyAction\":\"KEY_ACTION_SINGLE_PRESS\","
              "\"codeset\":\"\",\"response\":\"PASS\"}\n"
              "+0 client reply 0 {\"keyVal\":36,\"keyAction\":\"KEY_ACTION_END_PRESS\","
              "\"codeset\":\"T2051\",\"response\":\"PASS\"}\n+0 lpm 169 value 0 state 1\n");
    EXPECT_EQ(
        m_world.TakeLog(),
        "2 TrellanServer: Unable to get codeset for CEC device, cloud not connected\n"
        "2 TrellanServer: Unable to get codeset for EDID device, cloud not connected\n"
        "2 TrellanServer: Unable to get codeset for Direct Entry device, cloud not connected\n"
        "3 TrellanServer: Get the current UEI Cloud Connect status\n"
        "3 TrellanServiceCodesetHandler: No keymap found for Codeset T2051 not loaded in "
        "blaster?\n"
        "3 TrellanServiceKeyHandler: Trellan_ServiceKeyHandler: m_allowContinuous is false\n"
        "1 TrellanServiceKeyHandler: CEC key press must have separate press and release, no "
        "single key press\n"
        "3 TrellanServiceKeyHandler: CEC END key press \n");
}

TEST_F(ServerTest, SourceListThatMatchesTheStoreEnablesInfraredKeys)
{
    SendSources({"T2051"});
    EXPECT_EQ(m_world.TakeLog(),
              "3 TrellanServer: Received codesets from PC\n"
              "3 TrellanServiceCodesetHandler: CodesetConfig file is "
              "/mnt/nv/product-persistence/TRSCodesetConfig.json\n"
              "3 TrellanServiceCodesetHandler: The codesets match, we can send keys\n"
              "3 TrellanServiceCodesetHandler: WhiteList file is /opt/Orlu/etc/UEI/WhiteList.json\n"
              "1 TrellanServiceCodesetHandler: Failed to load whitelist file "
              "/opt/Orlu/etc/UEI/WhiteList.json\n"
              "3 TrellanServiceCodesetHandler: White list file successfully{}\n"
              "3 TrellanServiceCodesetHandler: Codeset T2051 NOT in whiteList\n"
              "3 TrellanServiceCodesetHandler: Setting send key state to 1\n");

    RequestKey(*m_client, 26, "T2051", OrluKeyReqMessage_t::KEY_ACTION_SINGLE_PRESS);
    IsKeyInCodesetMessage_t question;
    question.set_cicode("T2051");
    question.set_ueikey(0x119);
    m_client->Request(TrellanService_MESSAGE_ID_IS_KEY_IN_CODESET, question);
    SendSources({"T2051"});
    EXPECT_EQ(Effects(),
              "+0 client reply 4 {\"ciCode\":\"T2051\",\"ueiKey\":281,\"response\":true}\n"
              "+0 client event 9 {\"syncState\":true}\n"
              "+0 lpm 80 000701080319800000\n"
              "+0 client reply 0 {\"keyVal\":26,\"keyAction\":\"KEY_ACTION_SINGLE_PRESS\","
              "\"codeset\":\"T2051\",\"response\":\"PASS\"}\n");
}

TEST_F(ServerTest, ANewClientReplacesTheFirst)
{
    SendSources({"T2051"});
    m_world.lpm.AnswerAfter(50);
    RequestKey(*m_client, 26, "T2051", OrluKeyReqMessage_t::KEY_ACTION_SINGLE_PRESS);
    Run();
    ScriptedClient second(m_world.effects, "second");
    EXPECT_EQ(Effects(), "+0 lpm 80 000701080319800000\n+0 client closed\n");

    m_world.TakeLog();
    m_world.runtime.Advance(100);
    m_world.service.Server().NotifyState(TrellanService_STATE_COMPLETE_CALLED);
    EXPECT_EQ(Effects(),
              "+100 second event 3 {\"State\":\"TrellanService_STATE_COMPLETE_CALLED\"}\n");
    EXPECT_EQ(m_world.TakeLog(), "2 TrellanServer: Trellan_Server is not connected\n");

    second.Disconnect();
    Run();
    m_world.service.Server().NotifyState(TrellanService_STATE_CANCEL_CALLED);
    m_world.service.Server().NotifyBlasterSyncComplete(true);
    EXPECT_EQ(m_world.TakeLog(),
              "3 TrellanServer: the client connection has been disconnected.\n"
              "2 TrellanServer: Trellan_Server is not connected\n"
              "2 TrellanServer: Trellan_Server is not connected \n");
}

TEST_F(ServerTest, KeepsNoCodesetNameAtALengthThatNoneHas)
{
    SendSources({"T2051"});
    Effects();
    m_world.TakeLog();
    // In front of the cut stands a name that is held.
    const std::string longName = "T2051" + std::string(100'000, 'x');
    for (const auto action : {OrluKeyReqMessage_t::KEY_ACTION_SINGLE_PRESS,
                              OrluKeyReqMessage_t::KEY_ACTION_CONTINUOUS_PRESS,
                              OrluKeyReqMessage_t::KEY_ACTION_END_PRESS}) {
        RequestKey(*m_client, 140, longName, action);
    }
    m_world.runtime.Advance(1000);
    EXPECT_EQ(Effects().find("lpm 80 0007"), std::string::npos);
    const std::string log = m_world.TakeLog();
    EXPECT_NE(log.find("2 TrellanServer: Code set name of 100005 bytes in a key request\n"),
              std::string::npos);
    EXPECT_LT(log.size(), 4000U);
    EXPECT_EQ(m_world.service.KeyHandler().GetKeyHistory().back(),
              "Value: 8c Key: kKey_POWER ciCode: T2051" + std::string(59, 'x') + "... Flag: 80\n");
    RequestKey(*m_client, 140, "T" + std::string(58, '0') + "02051",
               OrluKeyReqMessage_t::KEY_ACTION_SINGLE_PRESS);
    EXPECT_NE(Effects().find("lpm 80 000701080301800000"), std::string::npos);
}

TEST_F(ServerTest, CloudCountsAsConnectedASecondLaterAndAsLostAtOnce)
{
    Trellan_Server& server = m_world.service.Server();
    server.setCloudConnected(true);
    m_world.runtime.Advance(999);
    m_client->Request(TrellanService_MESSAGE_ID_IS_CLOUD_CONNECTED, CloudConnectState_t());
    Run();
    m_world.runtime.Advance(5000);
    server.setCloudConnected(false);
    server.setCloudConnected(true);
    server.setCloudConnected(false);
    m_world.runtime.Advance(5000);
    EXPECT_EQ(Effects(),
              "+999 client reply 6 {\"connectState\":false}\n"
              "+1000 client event 7 {\"connectState\":true}\n"
              "+5999 client event 7 {\"connectState\":false}\n"
              "+5999 client event 7 {\"connectState\":false}\n");
}

TEST_F(ServerTest, CloudDoesNotCountWhileTheBlasterWaitsForASyncThatCannotBegin)
{
    m_world.qsp.results["get_lookup_session"] = 12;
    SendSources({"T2051", "S0456"});
    m_world.service.Server().setCloudConnected(true);
    m_world.runtime.Advance(2000);
    EXPECT_EQ(Effects(), "+1000 qsp get_lookup_session  2\n+2000 qsp get_lookup_session  2\n");
    EXPECT_FALSE(m_world.service.Server().IsCloudConnected());
}

}  // namespace
}  // namespace TrellanService
