// SPDX-License-Identifier: Apache-2.0

#include "KeyFixture.h"

using namespace TrellanService;

namespace {

class KeySending : public KeyFixture {};

TEST_F(KeySending, SinglePressIsAnsweredByTheBlaster)
{
    Start();
    lpm.Reply(0x01, std::string("\x01\x07", 2));
    Single(85);
    EXPECT_EQ(effects.Take(), "+0 lpm 80 000701080318800000\n+0 answer '0107'\n");
    EXPECT_EQ(TakeLog(),
              "3 TranslateOrluToUEI: Orlu Key 85 translated to UEI key 24\n"
              "3 Sending LPM message\n"
              "3 UEI Key Press: 24 code set: T2051 Key Flag: 128 corresponding Orlu key: 85\n");
}

TEST_F(KeySending, GoesByCecWithoutACodesetOrAReadyBlaster)
{
    Start();
    for (const SendKeyState state :
         {SendKeyReady, SendKeyStartup, SendKeyOSM, SendKeySyncPending}) {
        SCOPED_TRACE(state);
        codesets.SetSendKeyState(state);
        const std::string codeset = state == SendKeyReady ? "" : "T2051";
        Press(300, codeset);
        Release(codeset);
        EXPECT_EQ(effects.Take(),
                  "+0 answer 'CEC key sent'\n+0 lpm 169 value 300 state 0\n"
                  "+0 answer 'CEC key sent'\n+0 lpm 169 value 0 state 1\n");
        EXPECT_EQ(TakeLog(), "3 Sending Orlu key 300 to LPM CEC\n3 CEC END key press \n");
        Single(85, codeset);
        EXPECT_EQ(effects.Take(), "+0 answer ''\n");
        EXPECT_EQ(TakeLog(),
                  "1 CEC key press must have separate press and release, no single key press\n");
    }
    EXPECT_TRUE(keys->GetKeyHistory().empty());
}

// The path of an end press is that of the state which it finds, not of its press.
TEST_F(KeySending, AnEndPressThatFindsAnotherStateLeavesTheKeyHeld)
{
    Start();
    Press(85);
    codesets.SetSendKeyState(SendKeySyncPending);
    Release();
    runtime.Advance(320);
    EXPECT_EQ(effects.Take(),
              "+0 answer ''\n+0 lpm 80 000701080318ff0000\n"
              "+0 answer 'CEC key sent'\n+0 lpm 169 value 0 state 1\n"
              "+120 lpm 80 000100\n+320 lpm 82 000701080318000000\n");
    codesets.SetSendKeyState(SendKeyReady);
    Release();
    runtime.Advance(1000);
    EXPECT_EQ(effects.Take(), "+0 answer ''\n+0 lpm 80 000100\n");

    codesets.SetSendKeyState(SendKeySyncPending);
    Press(85);
    codesets.SetSendKeyState(SendKeyReady);
    Release();
    runtime.Advance(1000);
    EXPECT_EQ(effects.Take(),
              "+0 answer 'CEC key sent'\n+0 lpm 169 value 85 state 0\n+0 answer ''\n");
}

TEST_F(KeySending, ForcedBlastIgnoresTheState)
{
    Start();
    codesets.SetSendKeyState(SendKeyOSM);
    keys->sendContinuousKey("T2051", 85, Answer(), true);
    keys->sendEndKey("", Answer(), true);
    runtime.RunUntilIdle();
    EXPECT_EQ(effects.Take(),
              "+0 answer ''\n+0 answer ''\n"
              "+0 lpm 80 000701080318ff0000\n+0 lpm 80 000100\n");
    EXPECT_EQ(TakeLog(),
              "3 Sending key in safe blast mode\n"
              "3 TranslateOrluToUEI: Orlu Key 85 translated to UEI key 24\n"
              "3 Sending LPM message\n"
              "3 UEI Key Press: 24 code set: T2051 Key Flag: 255 corresponding Orlu key: 85\n"
              "3 Sending end key to LPM\n3 Sending LPM message\n3 UEI END Key Press \n");
}

TEST_F(KeySending, WhatHasNoMeaningOrNumberIsRecordedAllTheSame)
{
    Start();
    Single(3);
    EXPECT_EQ(effects.Take(), "+0 lpm 80 0007010803ff800000\n+0 answer '0100'\n");
    EXPECT_NE(TakeLog().find("2 No UEI mapping for key, sending INVALID 3\n"), std::string::npos);
    EXPECT_EQ(keys->GetKeyHistory().back(), "Value: 3 Key:  ciCode: T2051 Flag: 80\n");
    Press(85, "bad");
    runtime.Advance(130);
    EXPECT_EQ(effects.Take(), "+0 answer ''\n+120 lpm 80 000100\n");
    EXPECT_EQ(keys->GetKeyHistory().back(), "Value: 55 Key: kKey_PLAY ciCode: bad Flag: ff\n");
}

TEST_F(KeySending, HistoryKeepsTheLastFiftyKeys)
{
    Start();
    for (std::uint32_t press = 0; press < 51; ++press) {
        Single(140 + press);
    }
    EXPECT_EQ(keys->GetKeyHistory().size(), 50U);
    EXPECT_TRUE(keys->GetKeyHistory().front().starts_with("Value: 8d"));
    EXPECT_TRUE(keys->GetKeyHistory().back().starts_with("Value: be"));
    keys->ClearKeyHistory();
    EXPECT_TRUE(keys->GetKeyHistory().empty());
}

TEST_F(KeySending, ProductSaysWhetherKeysMayStayOn)
{
    using Row = std::pair<const char*, bool>;
    for (const auto& [data, allowed] :
         {Row{"{}", false}, Row{R"({"irBlasterCapability":"full"})", true},
          Row{R"({"irBlasterCapability":"Full","testflagirBlasterCapability":"full"})", false},
          Row{R"({"irBlasterCapability":"","productType":"other"})", false},
          Row{R"({"testflagirBlasterCapability":"full"})", true},
          Row{R"({"testflagirBlasterCapability":"half","productType":"other"})", false},
          Row{R"({"productType":"other"})", true},
          Row{R"({"productType":"marlow-tenpenny"})", false}}) {
        SCOPED_TRACE(data);
        Start(data);
        EXPECT_EQ(keys->m_allowContinuous, allowed);
    }
}

}  // namespace
