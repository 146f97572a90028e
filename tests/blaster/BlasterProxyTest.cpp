// SPDX-License-Identifier: Apache-2.0

#include "blaster/Trellan_ServiceBlasterProxy.h"

#include <optional>

#include <fmt/format.h>

#include "blaster/BlasterFixture.h"
#include "blaster/BlasterFrames.h"

namespace TrellanService::Tests {

using namespace LpmServiceMessages;
using namespace TrellanServiceMessages;

namespace {

/// Marks each message that it fills, and sets a `lastResult` that the proxy must replace.
class Responses : public UEIResponsesIF {
public:
    void FillOSMControlResp(OSMControlResp_t& response) override
    {
        response.set_cicode("osm");
        response.set_lastresult("LAST_RESULT_NONE");
    }
    void FillDirectEntryResp(DirectEntryResp_t& response) override
    {
        response.set_cicode("direct");
        response.set_lastresult("LAST_RESULT_NONE");
    }
};

class BlasterProxy : public BlasterFixture {
protected:
    BlasterProxy()
    {
        Serve();
        Run([this] { proxy.emplace(task.get(), responses); });
        TakeLog();
    }

    void Store(const std::string& codeset, std::size_t size)
    {
        const std::vector<std::uint8_t> data(size, 0x5A);
        Run([this, codeset, data] {
            stored = proxy->StoreCodesetInBlaster(codeset, data.data(),
                                                  static_cast<std::uint32_t>(data.size()));
        });
    }

    /// Loads a code set and waits. The result is recorded behind `name`.
    template <class Response>
    void Queue(const std::string& name)
    {
        Run([this, name] {
            proxy->QueueCallback(Callback<Response>(
                [this, name](const Response& response) { answers += name + Text(response); }));
        });
    }
    static std::string Text(const BulkTransferResponse& response)
    {
        return " " + std::to_string(response.result()) + "\n";
    }
    template <class Response>
    static std::string Text(const Response& response)
    {
        return " " + response.cicode() + " " + response.lastresult() + "\n";
    }
    void QueueSourceList(const std::string& name) { Queue<BulkTransferResponse>(name); }
    void QueueTests()
    {
        Queue<OSMControlResp_t>("osm");
        Queue<DirectEntryResp_t>("direct");
    }

    void BlasterDone(const std::string& hex)
    {
        lpm.BlasterDone(hex);
        runtime.RunUntilIdle();
    }

    Responses responses;
    std::optional<Trellan_ServiceBlasterProxy> proxy;
    bool stored = false;
};

TEST_F(BlasterProxy, EachRequestIsOneFrameUnderItsId)
{
    lpm.ReplyToAll("\x02\x07");
    Run([this] {
        Trellan_ServiceBlasterProxy& p = *proxy;
        EXPECT_TRUE(p.SendEndKey(Note("end")) && p.SendBlasterKey("C0564", 7, 0x80, Note("once")) &&
                    p.SendBlasterKey("C0564", 7, 0xFF, Note("on")) &&
                    p.SendBlasterKey("C0564", 7, 0, Note("unasked")) &&
                    p.GetBlasterKeyMap("C0564", Note("map")) && p.ResetBlaster(Note("reset")) &&
                    p.SendGetVersion(Note("version")) &&
                    p.DeleteCodesetFromBlaster("C0564", Note("delete")) &&
                    p.ListBlasterCodesets(Note("list")) && p.SendCecKeyPress(36, Note("press")) &&
                    p.SendCecKeyRelease(Note("release")));
    });
    EXPECT_EQ(TakeRecord(),
              "80 request TRS_BlasterMsg_t 2 000100\n"
              "80 request TRS_BlasterMsg_t 2 000701123407800000\n"
              "80 request TRS_BlasterMsg_t 2 000701123407ff0000\n"
              "82 TRS_BlasterMsg_t 2 000701123407000000\n"
              "84 TRS_BlasterMsg_t 2 0003021234\n"
              "80 request TRS_BlasterMsg_t 2 00020901\n"
              "80 request TRS_BlasterMsg_t 2 00010b\n"
              "80 request TRS_BlasterMsg_t 2 00030c1234\n"
              "80 request TRS_BlasterMsg_t 2 000111\n"
              "169 IpcCecKey_t 2 value 36 state 0\n"
              "169 IpcCecKey_t 2 value 0 state 1\n");
    const std::string sent = Hex("CEC key sent") + "\n";
    EXPECT_EQ(TakeAnswers(), "unasked 0100\npress " + sent + "release " + sent +
                                 "end 0207\nonce 0207\non 0207\nmap 0207\nreset 0207\n"
                                 "version 0207\ndelete 0207\nlist 0207\n");
}

TEST_F(BlasterProxy, RepliesOfAnotherTypeNeverReachTheCaller)
{
    lpm.NameReplies("IpcCecKey_t");
    Run([this] { proxy->ResetBlaster(Note("named")); });
    EXPECT_EQ(TakeAnswers(), "");
    lpm.NameReplies("");
    Run([this] { proxy->ResetBlaster(Note("unnamed")); });
    EXPECT_EQ(TakeAnswers(), "unnamed 0100\n");
}

TEST_F(BlasterProxy, ALoadWithoutAnAnswerIsGivenUpAfterThirtySeconds)
{
    QueueSourceList("list");
    runtime.Advance(10000);
    QueueTests();
    runtime.Advance(19999);
    EXPECT_EQ(TakeAnswers(), "");
    runtime.Advance(1);
    EXPECT_EQ(TakeAnswers(), "list -1\n");
    EXPECT_TRUE(TakeLog().ends_with("2 No answer to a bulk transfer, giving it up\n"));
    QueueSourceList("next");
    runtime.Advance(10000);
    EXPECT_EQ(TakeAnswers(), "osm  LAST_RESULT_ERROR\ndirect direct LAST_RESULT_ERROR\n");
    BlasterDone("0100");
    EXPECT_EQ(TakeAnswers(), "next 0\n");
    runtime.Advance(60000);
    EXPECT_EQ(TakeAnswers(), "");
}

TEST_F(BlasterProxy, ALoadThatIsRefusedAnswersTheOneThatQueuedForIt)
{
    Queue<OSMControlResp_t>("test");
    QueueSourceList("list");
    TakeLog();
    Store("C0564", 1200);
    EXPECT_FALSE(stored);
    EXPECT_EQ(TakeRecord(), "");
    EXPECT_EQ(TakeLog(), "2 Codeset C0564 of 1200 bytes is too large for the blaster\n");
    EXPECT_EQ(TakeAnswers(), "list -1\n");
    Store("?", 1);
    EXPECT_EQ(TakeAnswers(), "");
    BlasterDone("0100");
    EXPECT_EQ(TakeAnswers(), "test osm LAST_RESULT_CONTINUE\n");
    Store("C0564", 1199);
    EXPECT_TRUE(stored);
}

TEST_F(BlasterProxy, AKeyThatDoesNotWaitIsAnsweredWithoutAnLpm)
{
    Leave();
    Run([this] {
        proxy->SendBlasterKey("T2051", 1, 0, Note("at once"));
        proxy->SendBlasterKey("T2051", 1, 0x80, Note("never"));
    });
    runtime.Advance(60000);
    EXPECT_EQ(TakeAnswers(), "at once 0100\n");
}

TEST_F(BlasterProxy, NamesWithoutADeviceNumberSendNothing)
{
    bool any = false;
    Run([this, &any] {
        any |= proxy->SendBlasterKey("X0001", 1, 0, Note("key"));
        any |= proxy->DeleteCodesetFromBlaster("X0001", Note("delete"));
        any |= proxy->GetBlasterKeyMap("X0001", Note("map"));
    });
    Store("X0001", 3);
    EXPECT_FALSE(any || stored);
    EXPECT_EQ(TakeRecord(), "");
    const std::string refused = Hex("X0001 not valid codeset");
    EXPECT_EQ(TakeAnswers(), "delete " + refused + "\nmap " + refused + "\n");

    lpm.KeyMap("0100");
    runtime.RunUntilIdle();
    EXPECT_EQ(TakeAnswers(), "");
}

TEST_F(BlasterProxy, KeyMapsAnswerInOrderAndOneThatNeverComesTakesNoLaterOne)
{
    lpm.Reply(0x02, std::nullopt);
    Run([this] { proxy->GetBlasterKeyMap("T2051", Note("lost")); });
    runtime.Advance(29999);
    Run([this] {
        proxy->GetBlasterKeyMap("C0564", Note("next"));
        proxy->GetBlasterKeyMap("T2051", Note("last"));
    });
    TakeLog();
    runtime.Advance(1);
    EXPECT_EQ(TakeLog(), "2 No answer to a key map query, giving it up\n");
    for (const char* map : {"03000405", "020700", "0100"}) {
        lpm.KeyMap(map);
        runtime.RunUntilIdle();
    }
    EXPECT_EQ(TakeAnswers(), "next 03000405\nlast 020700\n");
    EXPECT_EQ(TakeLog(),
              "4 GetKeyMap callback function exists\n4 GetKeyMap bulk transfer from LPM complete\n"
              "4 GetKeyMap callback function exists\n4 GetKeyMap bulk transfer from LPM complete\n"
              "4 GetKeyMap bulk transfer from LPM complete\n");
}

TEST_F(BlasterProxy, ANewLinkEndsWhatWaitedForTheLostOne)
{
    lpm.Reply(0x02, std::nullopt);
    Queue<DirectEntryResp_t>("direct");
    QueueSourceList("list");
    Run([this] { proxy->GetBlasterKeyMap("T2051", Note("lost")); });
    lpm.DropClients();
    runtime.Advance(2000);
    EXPECT_EQ(TakeAnswers(), "direct direct LAST_RESULT_ERROR\nlist -1\n");
    QueueSourceList("next");
    Run([this] { proxy->GetBlasterKeyMap("C0564", Note("map")); });
    BlasterDone("0100");
    lpm.KeyMap("0100");
    runtime.RunUntilIdle();
    EXPECT_EQ(TakeAnswers(), "next 0\nmap 0100\n");
}

TEST_F(BlasterProxy, ALoadIsAnsweredByTheBlasterAlone)
{
    lpm.AnswerLoads(BULK_TRANSFER_SUCCESS);
    lpm.Reply(0x22, std::nullopt);
    QueueSourceList("list");
    TakeLog();
    Store("C0564", 2);
    EXPECT_TRUE(stored);
    EXPECT_EQ(TakeRecord(), "65539 request - 2 length 7 type 2 00052212345a5a\n");
    EXPECT_EQ(TakeAnswers(), "");
    BlasterDone("0100");
    EXPECT_EQ(TakeAnswers(), "list 0\n");
    EXPECT_EQ(TakeLog(),
              "3 Starting bulk transfer of codeset\n"
              "3 Bulk transfer complete status 0\n"
              "4 Bulk transfer successful, wait for blaster message\n"
              "3 Bulk transfer complete status = 0\n"
              "3 Codeset successfully loaded in blaster\n");
}

TEST_F(BlasterProxy, ResultsGoToTheGuidedTestThenDirectEntryThenTheSourceList)
{
    const auto queueAll = [this] {
        QueueSourceList("list");
        QueueTests();
        TakeLog();
    };
    queueAll();
    for (int i = 0; i < 4; ++i) {
        BlasterDone("0109");
    }
    EXPECT_EQ(TakeAnswers(),
              "osm osm LAST_RESULT_ERROR\ndirect direct LAST_RESULT_ERROR\nlist 0\n");
    EXPECT_TRUE(TakeLog().ends_with("1 No callback for bulk transfer blaster result\n"));

    lpm.AnswerLoads(BULK_TRANSFER_DECLINED);
    queueAll();
    for (int i = 0; i < 4; ++i) {
        Store("T2051", 1);
    }
    EXPECT_EQ(TakeAnswers(), "osm  LAST_RESULT_ERROR\ndirect direct LAST_RESULT_ERROR\nlist -3\n");
    EXPECT_TRUE(
        TakeLog().ends_with("3 Bulk transfer complete status -3\n"
                            "3 Bulk transfer failed.\n"
                            "1 No callback for bulk transfer response\n"));
}

TEST_F(BlasterProxy, TheLowThreeBitsOfTheStatusDecide)
{
    for (const std::string reply : {"0118", "0109", "01", ""}) {
        SCOPED_TRACE(reply);
        const bool good = reply == "0118";
        const std::string digit = good ? "8" : reply == "0109" ? "9" : "f";
        QueueTests();
        TakeLog();
        BlasterDone(reply);
        EXPECT_EQ(TakeLog(),
                  "3 Bulk transfer complete status = " + digit + "\n" +
                      (good ? "3 Codeset successfully loaded in blaster\n"
                            : "2 Failed to load codeset in blaster, reason code " + digit + "\n"));
        BlasterDone(reply);
        EXPECT_EQ(TakeAnswers(),
                  good ? "osm osm LAST_RESULT_CONTINUE\ndirect direct LAST_RESULT_SUCCESS\n"
                       : "osm osm LAST_RESULT_ERROR\ndirect direct LAST_RESULT_ERROR\n");
    }
}

TEST_F(BlasterProxy, AnAnswerMayQueueTheNextLoadAndAnUnsetOneIsSkipped)
{
    Run([this] {
        proxy->QueueCallback(
            Trellan_ServiceBlasterProxy::SourceListCallback([this](const BulkTransferResponse&) {
                for (int i = 0; i < 20; ++i) {
                    proxy->QueueCallback(Trellan_ServiceBlasterProxy::SourceListCallback());
                }
                answers += "first\n";
            }));
    });
    BlasterDone("0100");
    QueueSourceList("last");
    for (int i = 0; i < 20; ++i) {
        BlasterDone("0100");
    }
    EXPECT_EQ(TakeAnswers(), "first\n");
    BlasterDone("0100");
    EXPECT_EQ(TakeAnswers(), "last 0\n");
}

TEST(BlasterFrames, HoldTheirLengthHighByteFirst)
{
    const std::vector<std::uint8_t> most(BlasterFrames::kMaxStoreBytes, 0xA5);
    const std::string frame = BlasterFrames::Store(0x1234, most);
    EXPECT_EQ(frame.size(), 1204U);
    EXPECT_EQ(Hex(frame.substr(0, 6)), "04b2221234a5");
}

TEST(BlasterFrames, RepliesShorterThanTheirCountGiveWhatIsThere)
{
    using Frames = std::pair<const char*, std::string>;
    for (const auto& [reply, expected] :
         {Frames{"", "ff  "}, Frames{"03", "ff  "}, Frames{"0207", "07  "},
          Frames{"020700", "07 00 "}, Frames{"0300040506", "00 0405 1286 "},
          Frames{"ff0004", "00 04 "}, Frames{"00000405", "00  "},
          Frames{"060002123400", "00 02123400 4660 "}, Frames{"02000012", "00 00 "},
          Frames{"06000212340009", "00 0212340009 4660 9 "}}) {
        const std::string bytes = Unhex(reply);
        const auto keys = BlasterFrames::KeysOf(bytes);
        auto seen = fmt::format("{:02x} ", BlasterFrames::Status(bytes)) +
                    Hex(std::string(keys.begin(), keys.end())) + " ";
        for (const auto device : BlasterFrames::DevicesOf(bytes)) {
            seen += std::to_string(device) + " ";
        }
        EXPECT_EQ(seen, expected) << reply;
    }
}

}  // namespace

}  // namespace TrellanService::Tests
