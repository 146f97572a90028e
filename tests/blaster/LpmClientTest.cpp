// SPDX-License-Identifier: Apache-2.0

#include "blaster/LpmClientIF.h"

#include "blaster/BlasterFixture.h"
#include "blaster/MockLpmClient.h"
#include "blaster/Trellan_ServiceCecIF.h"
#include "support/TemporaryRoot.h"

namespace TrellanService::Tests {

using namespace LpmServiceMessages;

namespace {

class LpmClients : public BlasterFixture {
protected:
    void Connect()
    {
        Run([this] {
            client = CreateLpmClient("test", task.get());
            client->Connect([this](const bool& connected) {
                answers += connected ? "connected\n" : "not connected\n";
            });
        });
    }

    LpmTimedOut NoteTimeout()
    {
        return [this](std::uint32_t id) {
            answers += "timeout " + std::to_string(id) + "\n";
        };
    }

    Callback<BulkTransferResponse> NoteResult()
    {
        return [this](const BulkTransferResponse& response) {
            answers += "result " + std::to_string(response.result()) + "\n";
        };
    }

    std::shared_ptr<LpmClientIF> client;
};

TEST_F(LpmClients, ConnectInTheBackgroundAndAgainAfterALoss)
{
    Connect();
    EXPECT_EQ(TakeAnswers(), "");
    Serve();
    runtime.Advance(1000);
    EXPECT_EQ(TakeAnswers(), "connected\n");

    client->SetDisconnectCallback([this] { answers += "lost\n"; });
    TakeLog();
    Leave();
    EXPECT_EQ(TakeAnswers(), "lost\n");
    EXPECT_EQ(TakeLog(), "3 Connection lost\n");

    Serve();
    runtime.Advance(1000);
    EXPECT_EQ(TakeAnswers(), "connected\n");
}

TEST_F(LpmClients, StopTryingWhenTheyAreDisconnected)
{
    Connect();
    ::testing::internal::CaptureStdout();
    Run([this] { client->Disconnect([this] { answers += "closed\n"; }); });
    EXPECT_EQ(::testing::internal::GetCapturedStdout(),
              "virtual void LpmClientLite::Disconnect(const Callback<void>&)\n");
    Serve();
    runtime.Advance(5000);
    EXPECT_EQ(TakeAnswers(), "closed\n");
    Run([this] { client->Connect([this](const bool&) { answers += "connected\n"; }); });
    EXPECT_EQ(TakeAnswers(), "");
}

TEST_F(LpmClients, TimedRequestsEndExactlyOnce)
{
    Serve();
    Connect();
    TakeAnswers();
    Run([this] {
        client->SendBulkDataTimed({}, NoteResult(), NoteTimeout(), 300, IPC_DEVICE_LPM);
        client->SendBulkFileTimed({}, NoteResult(), NoteTimeout(), 200, IPC_DEVICE_LPM);
    });
    runtime.Advance(1000);
    EXPECT_EQ(TakeAnswers(), "timeout 65537\ntimeout 65539\n");

    lpm.AnswerLoads(BULK_TRANSFER_FILE_ERROR);
    Run([this] {
        client->SendBulkDataTimed({}, NoteResult(), NoteTimeout(), 300, IPC_DEVICE_LPM);
    });
    runtime.Advance(1000);
    EXPECT_EQ(TakeAnswers(), "result -2\n");

    Leave();
    Run([this] {
        client->TRS_SendToBlasterTimeout(
            {}, [this](const TRS_BlasterMsg_t&) { answers += "reply\n"; }, NoteTimeout(), 50,
            IPC_DEVICE_LPM);
    });
    runtime.Advance(50);
    EXPECT_EQ(TakeAnswers(), "timeout 80\n");
}

TEST_F(LpmClients, SendModesBareAndBulkMessagesWithoutATypeName)
{
    Serve();
    Connect();
    BulkNotifyData_t file;
    file.set_length(0);
    Run([this, file] {
        client->EnterLowPower({});
        client->ExitNWSMode({});
        client->SendBulkFile(file, {}, IPC_DEVICE_LPM);
    });
    EXPECT_EQ(TakeRecord(),
              "65540 request bare LowPowerSet 0801\n"
              "65548 request bare EnterNWS 0800\n"
              "65537 request - 2 length 0 type 0 \n");
}

TEST_F(LpmClients, TheMockCountsAsConnectedAndDoesNothing)
{
    Serve();
    bool inside = false;
    Run([this, &inside] {
        client = std::make_shared<MockLpmClient>(task.get());
        client->Connect([&inside](const bool& connected) { inside = connected; });
        EXPECT_TRUE(inside);
        EXPECT_FALSE(client->TRS_SendToBlaster(
            {}, [this](const TRS_BlasterMsg_t&) { answers += "reply\n"; }, IPC_DEVICE_LPM));
        client->TRS_SendKeyToBlaster({}, IPC_DEVICE_LPM);
        client->TRS_SendBlasterKeyMapRqst({}, IPC_DEVICE_LPM);
        client->SendCecKey({}, IPC_DEVICE_LPM);
        client->SendBulkData({}, NoteResult(), IPC_DEVICE_LPM);
    });
    runtime.Advance(5000);
    EXPECT_EQ(TakeAnswers() + TakeRecord(), "");
    EXPECT_EQ(TakeLog(),
              "3 MockLpmClient::Connect\n"
              "3 MockLpmClient::TRS_SendToBlaster Not Implemented\n"
              "3 MockLpmClient::TRS_SendKeyToBlaster Not Implemented\n"
              "3 MockLpmClient::TRS_SendBlasterKeyMapRqst Not Implemented\n"
              "3 MockLpmClient::SendCecKey Not Implemented\n");
}

TEST_F(LpmClients, OnlyTheWordTrueSelectsTheMock)
{
    const TemporaryRoot root;
    struct Row {
        const char* data;
        bool mock;
    };
    for (const Row& row : {Row{R"({"mockLPM": "true"})", true}, Row{R"({"mockLPM": "TrUe"})", true},
                           Row{R"({"mockLPM": "1"})", false}, Row{R"({"mockLPM": ""})", false},
                           Row{R"({"mockLPM": "true "})", false}, Row{"{}", false}}) {
        SCOPED_TRACE(row.data);
        root.Write("/opt/Orlu/etc/MfgData.json", row.data);
        MfgData::Reload();
        EXPECT_EQ(IsMockLpm(), row.mock);
        Run([this] { client = CreateLpmClient("test", task.get()); });
        EXPECT_EQ(dynamic_cast<MockLpmClient*>(client.get()) != nullptr, row.mock);
    }
}

TEST_F(LpmClients, TheCecListenerNotesEveryMessage)
{
    Serve();
    Trellan_ServiceCecIF cec(nullptr, task.get());
    EXPECT_FALSE(cec.ReceiveCecMessage({}));
    EXPECT_EQ(TakeLog(),
              "4 Received CEC Message from LPM\n"
              "1 CEC Message could not be received, as no connection is available.\n");
    Run([&cec] { cec.Initialize(); });
    EXPECT_EQ(TakeLog(), "3 TRS CEC IF connected\n");
    lpm.SendEvent(IPC_CEC_MSG, IpcCecMessage_t());
    runtime.RunUntilIdle();
    EXPECT_EQ(TakeLog(), "4 Received CEC Message from LPM\n4 CEC Message received from LPM\n");
}

}  // namespace

}  // namespace TrellanService::Tests
