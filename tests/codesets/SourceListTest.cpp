// SPDX-License-Identifier: Apache-2.0

#include "CodesetFixture.h"

using namespace TrellanService;

namespace {

constexpr const char* kStored =
    R"({"codesets":[{"name":"T2051","details":{"devNum":2051,"ambiguousKeyBitMap":1,)"
    R"("checksum":"c","safeToBlast":true,"keyMap":{"keys":[19]}}}]})";

class SourceList : public CodesetFixture {
protected:
    void Handle(const std::vector<std::string>& names) { handler->HandlePCSourceList(List(names)); }
    std::string Names() const
    {
        std::string text;
        for (const auto& row : handler->GetCodesets()) {
            text += row.first + " ";
        }
        return text + std::to_string(handler->GetSendKeyState());
    }
};

TEST_F(SourceList, EqualToTheStoreMakesKeysReady)
{
    root.Write(kStorePath, kStored);
    Handle({"T2051"});
    EXPECT_EQ(Names(), "T2051 1");
    EXPECT_EQ(notified, "");
    EXPECT_EQ(handler->GetWhiteListVersion(), "");  // the list was applied anew
    EXPECT_EQ(Map(), "T2051 803 1 c unsafe 13;");
    Handle({"T2051"});
    EXPECT_EQ(notified, "done;");
    Handle({});  // one that only shrinks is a match
    EXPECT_EQ(Names(), "T2051 1");
    EXPECT_EQ(notified, "done;done;");
}

TEST_F(SourceList, EmptyListOnAnEmptyOrDamagedStoreMakesKeysReady)
{
    Handle({});
    EXPECT_EQ(Names(), "1");
    root.Write(kStorePath, "{");
    Restart();
    Handle({});
    EXPECT_EQ(Names(), "1");
    EXPECT_EQ(root.Read(kStorePath), "{") << "left alone";
}

TEST_F(SourceList, ThatDiffersWaitsForASync)
{
    root.Write(kStorePath, kStored);
    Handle({"T2051", "S0456", "", "bad", "S0456", "X1", "\xff\xfe", "C0123"});
    EXPECT_EQ(Names(), "C0123 S0456 T2051 3");
    EXPECT_EQ(Map(), "C0123 107b 0  unsafe ;S0456 31c8 0  unsafe ;T2051 803 1 c safe 13;");
    EXPECT_EQ(notified, "");
    EXPECT_EQ(root.Read(kStorePath), kStored);
    Handle({"C0123"});
    EXPECT_EQ(Names(), "C0123 3");
    EXPECT_EQ(TakeLog().find("aborting"), std::string::npos);
    cloud = true;
    Handle({"T2051"});
    EXPECT_EQ(Names(), "T2051 3");
    EXPECT_NE(TakeLog().find("3 aborting current codeset sync\n"), std::string::npos);
}

TEST_F(SourceList, ThatChangesWhenReadyWaitsForASync)
{
    Handle({});
    for (const char* name : {"T2051", ""}) {
        SCOPED_TRACE(name);
        handler->SetSendKeyState(SendKeyReady);
        TakeLog();
        Handle({name});
        EXPECT_EQ(handler->GetSendKeyState(), SendKeySyncPending);
        EXPECT_EQ(TakeLog().find("3 The codesets don't match, we need to sync\n"
                                 "3 setting trs codeset map to match the source list codesets\n"),
                  0U);
    }
    EXPECT_EQ(notified, "");
}

TEST_F(SourceList, DuringAGuidedTestOnlyEditsTheMap)
{
    Handle({});
    handler->SetSendKeyState(SendKeyOSM);
    TakeLog();
    Handle({"T2051"});
    EXPECT_EQ(Names(), "T2051 2");
    EXPECT_EQ(TakeLog(),
              "3 setting trs codeset map to match the source list codesets\n"
              "3 TRS: Converted T2051 to 0x0803\n3 Codeset = T2051\n");
}

TEST_F(SourceList, KeysOfACodesetCanBeAskedFor)
{
    root.Write(kStorePath, kStored);
    handler->InitCodesetMap();
    TakeLog();
    EXPECT_TRUE(handler->isKeyInCodeset(19, "T2051"));
    EXPECT_FALSE(handler->isKeyInCodeset(8, "T2051"));
    EXPECT_FALSE(handler->isKeyInCodeset(19, "T0001"));
    const auto known = handler->GetStoredKeyMap("T2051");
    EXPECT_EQ(known.ShortDebugString(), R"(ciCode: "T2051" ueiKey: "\023" numKeys: 1)");
    const auto unknown = handler->GetStoredKeyMap("T1");
    EXPECT_EQ(unknown.ShortDebugString(), R"(ciCode: "T1" ueiKey: "\377" numKeys: 0)");
    EXPECT_EQ(TakeLog(),
              "3 key 19 found in codeset T2051\n3 key 8 NOT in codeset T2051\n"
              "3 Codeset T0001 not loaded in blaster\n"
              "3 No keymap found for Codeset T1 not loaded in blaster?\n");
}

}  // namespace
