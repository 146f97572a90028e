// SPDX-License-Identifier: Apache-2.0

#include "codesets/CodesetFixture.h"

namespace TrellanService {
namespace {

using namespace LpmServiceMessages;

constexpr const char* kDone = "\x01\0";

/// A sync of S0456 and T2051 whose reset has been sent.
class BlasterSyncTest : public CodesetFixture {
protected:
    void Begin(const std::vector<std::string>& names)
    {
        handler->HandlePCSourceList(List(names));
        reachable = true;
        TakeLog();
        EXPECT_TRUE(handler->syncCodesets());
        EXPECT_EQ(TakeSteps(), "reset;");
    }

    void Succeed() { Reply({kDone, 2}); }

    /// Answers the reset and continues to the key map of the first code set.
    void LoadBoth()
    {
        Succeed();
        Loaded(BULK_TRANSFER_SUCCESS);
        Loaded(BULK_TRANSFER_SUCCESS);
        EXPECT_EQ(TakeSteps(), "load S0456 2;load T2051 2;keymap S0456;");
    }
};

TEST_F(BlasterSyncTest, LoadsInOrderOfNameThenReadsTheKeysBack)
{
    root.Write(kWhiteListPath, R"({"version": "7", "ciCodes": [{"name": "T2051",)"
                               R"( "checksum": ["900150983cd24fb0d6963f7d28e17f72"]}]})");
    root.Write(kStorePath, "{}");
    Begin({"T2051", "S0456"});
    EXPECT_EQ(notified, "begun;");
    Succeed();
    handler->StoreCodesetChecksum("T2051", reinterpret_cast<const std::uint8_t*>("abc"), 3);
    handler->StoreCodesetChecksum("T2052", nullptr, 0);
    Loaded(BULK_TRANSFER_SUCCESS);
    Loaded(BULK_TRANSFER_SUCCESS);
    Reply({"\x03\0\x04\x05", 4});
    TakeLog();
    Reply({"\x02\0\x13", 3});
    EXPECT_EQ(TakeSteps(), "load S0456 2;load T2051 2;keymap S0456;keymap T2051;end burst;");
    EXPECT_EQ(notified, "begun;done;");
    EXPECT_EQ(Map(),
              "S0456 31c8 0  unsafe 0405;"
              "T2051 803 1 900150983cd24fb0d6963f7d28e17f72 safe 13;");
    const std::string log = TakeLog();
    EXPECT_EQ(log.find("3 Key map returned successfully\n"
                       "3 Ambiguous key bit map for codeset T2051 is 0x00000001\n"
                       "3 Done storing ambiguous key bit maps\n3 WhiteList file is "),
              0U)
        << log;
    EXPECT_NE(log.find("3 Setting send key state to 1\n"), std::string::npos);

    Restart();
    EXPECT_TRUE(handler->compareCodesets(List({"S0456", "T2051"})));
}

TEST_F(BlasterSyncTest, OverAnEmptyMapResetsAndIsDone)
{
    Begin({""});
    Succeed();
    EXPECT_EQ(TakeSteps(), "end burst;");
    EXPECT_EQ(notified, "begun;done;");
    EXPECT_EQ(handler->GetSendKeyState(), SendKeyReady);
    EXPECT_NE(TakeLog().find("3 Done loading codesets\n3 Done storing ambiguous key bit maps\n"),
              std::string::npos);
}

TEST_F(BlasterSyncTest, EndsAtTheFirstStepThatFails)
{
    const auto endedWith = [this](const std::string& line) {
        EXPECT_EQ(TakeSteps(), "");
        EXPECT_EQ(notified, "begun;");
        EXPECT_EQ(handler->GetSendKeyState(), SendKeySyncPending);
        EXPECT_TRUE(TakeLog().ends_with("3 " + line + "\n")) << line;
        notified.clear();
    };
    Begin({"T2051", "S0456"});
    Reply({"\x01\x17", 2});
    endedWith("TRS load blaster codeset failed reason 7");
    Begin({"T2051", "S0456"});
    Reply("\x01");
    endedWith("TRS load blaster codeset failed reason 15");
    Begin({"T2051", "S0456"});
    Succeed();
    EXPECT_EQ(TakeSteps(), "load S0456 2;");
    Loaded(BULK_TRANSFER_DECLINED);
    endedWith("TRS load blaster codeset failed");
    Begin({"T2051", "S0456"});
    LoadBoth();
    Reply({"\x01\x04", 2});
    endedWith("TRS get key map failed reason 4");
    EXPECT_EQ(root.Read(kStorePath), "");
}

TEST_F(BlasterSyncTest, ANewListBeginsItAnewAtTheNextStep)
{
    Begin({"T2051", "S0456"});
    cloud = true;
    Succeed();
    handler->HandlePCSourceList(List({"C0123"}));  // takes the entry that is being loaded away
    Loaded(BULK_TRANSFER_SUCCESS);
    EXPECT_EQ(TakeSteps(), "load S0456 2;reset;");
    Succeed();
    Loaded(BULK_TRANSFER_SUCCESS);
    handler->HandlePCSourceList(List({"C0123", "T2051"}));
    Reply({"\x02\0\x01", 3});
    EXPECT_EQ(TakeSteps(), "load C0123 2;keymap C0123;reset;");
    cloud = false;
    Succeed();
    Loaded(BULK_TRANSFER_SUCCESS);
    Loaded(BULK_TRANSFER_SUCCESS);
    Succeed();
    Succeed();
    EXPECT_EQ(TakeSteps(), "load C0123 2;load T2051 2;keymap C0123;keymap T2051;end burst;");
    EXPECT_EQ(notified, "begun;begun;begun;done;");
}

TEST_F(BlasterSyncTest, AnAnswerForAnEntryThatIsGoneGoesToNoOther)
{
    Begin({"C0001", "T0001"});
    Succeed();
    Loaded(BULK_TRANSFER_SUCCESS);
    handler->HandlePCSourceList(List({"T0001"}));  // without a cloud the sync goes on
    Loaded(BULK_TRANSFER_SUCCESS);
    handler->HandlePCSourceList(List({"N0001", "V0001"}));
    Reply({"\x02\0\x08", 3});
    Reply({"\x02\0\x09", 3});
    EXPECT_EQ(TakeSteps(), "load C0001 2;load T0001 2;keymap T0001;keymap V0001;end burst;");
    EXPECT_EQ(Map(), "N0001 2001 0  unsafe ;V0001 4001 0  unsafe 09;");
}

TEST_F(BlasterSyncTest, AnotherOneTakesItsPlace)
{
    Begin({"T2051", "S0456"});
    Succeed();
    const auto loadedForTheFirst = loaded;
    EXPECT_TRUE(handler->syncCodesets());
    loadedForTheFirst({});
    EXPECT_EQ(TakeSteps(), "load S0456 2;reset;");
    LoadBoth();
    const auto repliedToTheSecond = replied;
    EXPECT_TRUE(handler->syncCodesets());
    repliedToTheSecond({kDone, 2});
    Succeed();
    EXPECT_EQ(TakeSteps(), "reset;load S0456 2;");
}

TEST_F(BlasterSyncTest, DoesNotBeginWithoutACloud)
{
    handler->HandlePCSourceList(List({"T2051"}));
    EXPECT_FALSE(handler->syncCodesets());
    EXPECT_EQ(TakeSteps() + notified, "");
    cloud = true;
    EXPECT_TRUE(handler->syncCodesets());
    EXPECT_EQ(TakeSteps() + notified, "reset;begun;");
}

}  // namespace
}  // namespace TrellanService
