// SPDX-License-Identifier: Apache-2.0

#include "blaster/Trellan_ServiceBlasterProxy.h"

#include <optional>

#include "blaster/BlasterFixture.h"
#include "blaster/BlasterFrames.h"

namespace TrellanService::Tests {

using namespace LpmServiceMessages;
using namespace TrellanServiceMessages;

namespace {

/// Leaves a mark on what it fills, and a `lastResult` that is not to survive.
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

    void QueueOSM(const std::string& name)
    {
        Run([this, name] {
            proxy->QueueCallback(
                Trellan_ServiceBlasterProxy::OSMCallback([this, name](const OSMControlResp_t& r) {
                    answers += name + " " + r.cicode() + " " + r.lastresult() + "\n";
                }));
        });
    }

    void QueueDirectEntry(const std::string& name)
    {
        Run([this, name] {
            proxy->QueueCallback(Trellan_ServiceBlasterProxy::DirectEntryCallback(
                [this, name](const DirectEntryResp_t& r) {
                    answers += name + " " + r.cicode() + " " + r.lastresult() + "\n";
                }));
        });
    }

    void QueueSourceList(const std::string& name)
    {
        Run([this, name] {
            proxy->QueueCallback(Trellan_ServiceBlasterProxy::SourceListCallback(
                [this, name](const BulkTransferResponse& r) {
                    answers += name + " " + std::to_string(r.result()) + "\n";
                }));
        });
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

TEST_F(BlasterProxy, EachWishIsOneFrameUnderItsId)
{
    using Proxy = Trellan_ServiceBlasterProxy;
    struct Row {
        const char* name;
        std::function<bool(Proxy&, const AsyncCallback<std::string>&)> wish;
        const char* sent;
        const char* answer;
    };
    const std::vector<Row> rows = {
        {"end key", [](Proxy& p, const auto& c) { return p.SendEndKey(c); },
         "80 request TRS_BlasterMsg_t 2 000100\n", "end key 0207\n"},
        {"key once", [](Proxy& p, const auto& c) { return p.SendBlasterKey("C0564", 7, 0x80, c); },
         "80 request TRS_BlasterMsg_t 2 00070112340780"
         "0000\n",
         "key once 0207\n"},
        {"key on", [](Proxy& p, const auto& c) { return p.SendBlasterKey("C0564", 7, 0xFF, c); },
         "80 request TRS_BlasterMsg_t 2 000701123407ff0000\n", "key on 0207\n"},
        {"key unasked", [](Proxy& p, const auto& c) { return p.SendBlasterKey("C0564", 7, 0, c); },
         "82 TRS_BlasterMsg_t 2 000701123407000000\n", "key unasked 0100\n"},
        {"key map", [](Proxy& p, const auto& c) { return p.GetBlasterKeyMap("C0564", c); },
         "84 TRS_BlasterMsg_t 2 0003021234\n", "key map 0207\n"},
        {"reset", [](Proxy& p, const auto& c) { return p.ResetBlaster(c); },
         "80 request TRS_BlasterMsg_t 2 00020901\n", "reset 0207\n"},
        {"version", [](Proxy& p, const auto& c) { return p.SendGetVersion(c); },
         "80 request TRS_BlasterMsg_t 2 00010b\n", "version 0207\n"},
        {"delete", [](Proxy& p, const auto& c) { return p.DeleteCodesetFromBlaster("C0564", c); },
         "80 request TRS_BlasterMsg_t 2 00030c1234\n", "delete 0207\n"},
        {"list", [](Proxy& p, const auto& c) { return p.ListBlasterCodesets(c); },
         "80 request TRS_BlasterMsg_t 2 000111\n", "list 0207\n"},
        {"press", [](Proxy& p, const auto& c) { return p.SendCecKeyPress(36, c); },
         "169 IpcCecKey_t 2 value 36 state 0\n", "press 434543206b65792073656e74\n"},
        {"release", [](Proxy& p, const auto& c) { return p.SendCecKeyRelease(c); },
         "169 IpcCecKey_t 2 value 0 state 1\n", "release 434543206b65792073656e74\n"},
    };
    lpm.ReplyToAll("\x02\x07");
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        bool done = false;
        Run([this, &row, &done] { done = row.wish(*proxy, Note(row.name)); });
        EXPECT_TRUE(done);
        EXPECT_EQ(TakeRecord(), row.sent);
        EXPECT_EQ(TakeAnswers(), row.answer);
    }
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
    QueueOSM("test");
    QueueDirectEntry("entry");
    runtime.Advance(19999);
    EXPECT_EQ(TakeAnswers(), "");
    runtime.Advance(1);
    EXPECT_EQ(TakeAnswers(), "list -1\n");
    EXPECT_TRUE(TakeLog().ends_with("2 No answer to a bulk transfer, giving it up\n"));
    QueueSourceList("next");
    runtime.Advance(10000);
    EXPECT_EQ(TakeAnswers(), "test  LAST_RESULT_ERROR\nentry direct LAST_RESULT_ERROR\n");
    BlasterDone("0100");
    EXPECT_EQ(TakeAnswers(), "next 0\n");
    runtime.Advance(60000);
    EXPECT_EQ(TakeAnswers(), "");
}

TEST_F(BlasterProxy, ALoadThatIsRefusedAnswersTheOneThatQueuedForIt)
{
    QueueOSM("test");
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

TEST_F(BlasterProxy, AKeyMapThatNeverComesTakesNoLaterOne)
{
    lpm.Reply(0x02, std::nullopt);
    Run([this] { proxy->GetBlasterKeyMap("T2051", Note("lost")); });
    runtime.Advance(29999);
    Run([this] { proxy->GetBlasterKeyMap("C0564", Note("next")); });
    TakeLog();
    runtime.Advance(1);
    EXPECT_EQ(TakeLog(), "2 No answer to a key map query, giving it up\n");
    lpm.KeyMap("0100");
    runtime.RunUntilIdle();
    EXPECT_EQ(TakeAnswers(), "next 0100\n");
}

TEST_F(BlasterProxy, ANewLinkEndsWhatWaitedForTheLostOne)
{
    lpm.Reply(0x02, std::nullopt);
    QueueDirectEntry("direct");
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

TEST_F(BlasterProxy, KeyMapsAnswerInTheOrderInWhichTheyWereAsked)
{
    lpm.Reply(0x02, std::nullopt);
    Run([this] {
        proxy->GetBlasterKeyMap("T2051", Note("first"));
        proxy->GetBlasterKeyMap("C0564", Note("second"));
    });
    TakeLog();
    for (const char* map : {"03000405", "020700", "0100"}) {
        lpm.KeyMap(map);
        runtime.RunUntilIdle();
    }
    EXPECT_EQ(TakeAnswers(), "first 03000405\nsecond 020700\n");
    EXPECT_EQ(TakeLog(),
              "4 GetKeyMap callback function exists\n4 GetKeyMap bulk transfer from LPM complete\n"
              "4 GetKeyMap callback function exists\n4 GetKeyMap bulk transfer from LPM complete\n"
              "4 GetKeyMap bulk transfer from LPM complete\n");
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
        QueueDirectEntry("direct");
        QueueOSM("osm");
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
    struct Row {
        const char* reply;
        bool good;
        const char* digit;
    };
    for (const Row& row :
         {Row{"0100", true, "0"}, Row{"0108", true, "8"}, Row{"0118", true, "8"},
          Row{"0101", false, "1"}, Row{"0109", false, "9"}, Row{"0111", false, "1"},
          Row{"010f", false, "f"}, Row{"01", false, "f"}, Row{"", false, "f"}}) {
        SCOPED_TRACE(row.reply);
        QueueOSM("osm");
        QueueDirectEntry("direct");
        TakeLog();
        BlasterDone(row.reply);
        const std::string digit = row.digit;
        EXPECT_EQ(TakeLog(), "3 Bulk transfer complete status = " + digit + "\n" +
                                 (row.good ? "3 Codeset successfully loaded in blaster\n"
                                           : "2 Failed to load codeset in blaster, reason code " +
                                                 digit + "\n"));
        BlasterDone(row.reply);
        EXPECT_EQ(TakeAnswers(), row.good ? "osm osm LAST_RESULT_CONTINUE\n"
                                            "direct direct LAST_RESULT_SUCCESS\n"
                                          : "osm osm LAST_RESULT_ERROR\n"
                                            "direct direct LAST_RESULT_ERROR\n");
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

}  // namespace

}  // namespace TrellanService::Tests
