// SPDX-License-Identifier: Apache-2.0

#include <optional>

#include <gtest/gtest.h>

#include "ProtoBufs/Trellan_MessageIDs.pb.h"
#include "codesets/Trellan_ServiceCodesetHandler.h"
#include "support/ScriptedClient.h"
#include "support/World.h"

namespace TrellanService {
namespace {

using namespace TrellanServiceMessages;

constexpr const char* kStore = "/mnt/nv/product-persistence/TRSCodesetConfig.json";
constexpr std::uint8_t kStoreCommand = 0x22;
constexpr std::uint8_t kKeyMapCommand = 0x02;

/// A service with an empty store and a started engine, whose cloud has two code sets.
class SyncTest : public testing::Test {
protected:
    SyncTest() { m_world.root.Write(kStore, "{}"); }

    void Start()
    {
        m_world.qsp.binaries = {{"T2051", "tv"}, {"S0456", "box"}};
        m_world.lpm.Reply(kKeyMapCommand, std::string("\x03\0\x01\x13", 4));
        m_world.Start();
        m_world.PutProductValues();
        m_client.emplace(m_world.effects, "client");
        m_world.runtime.Advance(1000);
        m_world.effects.Take();
        m_world.TakeLog();
    }

    std::string Sources(const std::vector<std::string>& names)
    {
        SrcCiCodeMessage_t message;
        message.mutable_cicode()->Assign(names.begin(), names.end());
        m_client->Send(TrellanService_MESSAGE_ID_SRC_CICODES, message);
        m_world.runtime.RunUntilIdle();
        return m_world.effects.Take();
    }

    SendKeyState State() { return m_world.service.CodesetHandler().GetSendKeyState(); }

    World m_world;
    std::optional<ScriptedClient> m_client;
};

constexpr const char* kBegin =
    "+0 client event 9 {\"syncState\":false}\n"
    "+0 lpm 80 00020901\n"
    "+0 qsp get_lookup_session /opt/Orlu/etc/UEI/WRLD_linux.conf 2\n"
    "+0 qsp register_ir_callbacks -----*--------\n";

TEST_F(SyncTest, BringsEachCodesetFromTheCloudIntoTheBlaster)
{
    Start();
    EXPECT_EQ(Sources({"T2051", "S0456"}),
              kBegin + std::string("+0 qsp send_codeset_by_name S0456 2\n"
                                   "+0 lpm 65539 length 8 type 2 00062231c8626f78\n"
                                   "+0 qsp register_ir_callbacks -----*--------\n"
                                   "+0 qsp send_codeset_by_name T2051 2\n"
                                   "+0 lpm 65539 length 7 type 2 00052208037476\n"
                                   "+0 lpm 84 00030231c8\n"
                                   "+0 lpm 84 0003020803\n"
                                   "+0 client event 9 {\"syncState\":true}\n"));
    EXPECT_EQ(State(), SendKeyReady);
    EXPECT_EQ(m_world.root.Read(kStore),
              R"({"codesets":[{"name":"S0456","details":{"devNum":12744,"ambiguousKeyBitMap":1,)"
              R"("checksum":"34be958a921e43d813a2075297d8e862","safeToBlast":false,)"
              R"("keyMap":{"keys":[1,19]}}},{"name":"T2051","details":{"devNum":2051,)"
              R"("ambiguousKeyBitMap":1,"checksum":"c9a1fdac6e082dd89e7173244f34d7b3",)"
              R"("safeToBlast":false,"keyMap":{"keys":[1,19]}}}]})");
    EXPECT_EQ(Sources({"S0456"}), "+0 client event 9 {\"syncState\":true}\n");
}

TEST_F(SyncTest, GoesOnWithoutACodesetThatTheBlasterRefuses)
{
    Start();
    m_world.lpm.Reply(kStoreCommand, std::string("\x01\x07", 2));
    EXPECT_EQ(Sources({"S0456"}),
              kBegin + std::string("+0 qsp send_codeset_by_name S0456 2\n"
                                   "+0 lpm 65539 length 8 type 2 00062231c8626f78\n"
                                   "+0 lpm 84 00030231c8\n"
                                   "+0 client event 9 {\"syncState\":true}\n"));
    EXPECT_NE(m_world.TakeLog().find("2 TrellanServiceKeyHandler: Failed to load codeset in "
                                     "blaster, reason code 7\n"),
              std::string::npos);
    EXPECT_EQ(State(), SendKeyReady);
}

TEST_F(SyncTest, EndsWhereADownloadOrATransferFails)
{
    Start();
    EXPECT_EQ(Sources({"C0123"}), kBegin + std::string("+0 qsp send_codeset_by_name C0123 2\n"));
    EXPECT_TRUE(m_world.TakeLog().ends_with(
        "3 UEIInterface: Unable to download codeset 44\n"
        "3 TrellanServiceCodesetHandler: TRS load blaster codeset failed\n"));
    EXPECT_EQ(State(), SendKeySyncPending);
}

}  // namespace
}  // namespace TrellanService
