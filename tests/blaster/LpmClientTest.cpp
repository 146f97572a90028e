// SPDX-License-Identifier: Apache-2.0

#include "blaster/LpmClientIF.h"

#include "blaster/BlasterFixture.h"
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
    const auto load = [this] {
        client->SendBulkDataTimed({}, NoteResult(), NoteTimeout(), 300, IPC_DEVICE_LPM);
        client->SendBulkFileTimed({}, NoteResult(), NoteTimeout(), 200, IPC_DEVICE_LPM);
    };
    Run(load);
    runtime.Advance(1000);
    EXPECT_EQ(TakeAnswers(), "timeout 65537\ntimeout 65539\n");
    lpm.AnswerLoads(BULK_TRANSFER_FILE_ERROR);
    Run(load);
    runtime.Advance(1000);
    EXPECT_EQ(TakeAnswers(), "result -2\nresult -2\n");

    Leave();
    Run([this] { client->TRS_SendToBlasterTimeout({}, {}, NoteTimeout(), 50, IPC_DEVICE_LPM); });
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
        client->ExitLowPower({});
        client->EnterNWSMode({});
        client->ExitNWSMode({});
        client->SendBulkFile(file, {}, IPC_DEVICE_LPM);
    });
    EXPECT_EQ(TakeRecord(),
              "65540 request bare LowPowerSet 0801\n"
              "65540 request bare LowPowerSet 0800\n"
              "65548 request bare EnterNWS 0801\n"
              "65548 request bare EnterNWS 0800\n"
              "65537 request - 2 length 0 type 0 \n");
}

TEST_F(LpmClients, OnlyTheWordTrueSelectsTheMockWhichIsConnectedAtOnce)
{
    const TemporaryRoot root;
    for (const auto& [value, mock] :
         {std::pair{"true", true}, {"TrUe", true}, {"1", false}, {"", false}, {"true ", false}}) {
        SCOPED_TRACE(value);
        root.Write("/opt/Orlu/etc/MfgData.json", std::string(R"({"mockLPM": ")") + value + "\"}");
        MfgData::Reload();
        EXPECT_EQ(IsMockLpm(), mock);
        Connect();
        EXPECT_EQ(TakeAnswers(), mock ? "connected\n" : "");
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
