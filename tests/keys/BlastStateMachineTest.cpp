// SPDX-License-Identifier: Apache-2.0

#include "KeyFixture.h"

using namespace TrellanService;

namespace {

constexpr std::uint32_t kPlay = 85;  // UEI key 24, 0x18
constexpr std::uint32_t kTvPower = 36;

class BlastStateMachine : public KeyFixture {
protected:
    BlastStateMachine() { lpm.AnswerAfter(20); }

    void AllowByList()
    {
        root.Write("/opt/Orlu/etc/UEI/WhiteList.json",
                   R"({"ciCodes":[{"name":"T2051","checksum":[""]}]})");
        codesets.AddWhiteListStatus();
    }
};

TEST_F(BlastStateMachine, HoldsAKeyInBurstsUntilReleaseOrALostAnswer)
{
    const std::string begun = "+0 answer ''\n+0 lpm 80 000701080318ff0000\n";
    Start();
    EXPECT_EQ(Hold(kPlay, 500), begun +
                                    "+120 lpm 80 000100\n"
                                    "+340 lpm 82 000701080318000000\n"
                                    "+460 lpm 80 000100\n"
                                    "+500 answer ''\n");
    EXPECT_EQ(Hold(kPlay, 55), begun + "+55 answer ''\n+55 lpm 80 000100\n");
    lpm.Reply(0x00, std::nullopt);
    EXPECT_EQ(Hold(kPlay, 3000), begun + "+120 lpm 80 000100\n+3000 answer ''\n");
    lpm.Leave();
    runtime.RunUntilIdle();
    EXPECT_EQ(Hold(kPlay, 500), "+0 answer ''\n+500 answer ''\n");
}

TEST_F(BlastStateMachine, EndsABurstBeforeTheTaskBlocks)
{
    Start();
    Press(kPlay);
    effects.Take();
    const auto standStill = [this] {
        keys->EndBurst();
        runtime.Advance(1000);
    };
    IL::BreakThread(standStill, task.get());
    runtime.Advance(1100);
    EXPECT_EQ(effects.Take(), "+0 lpm 80 000100\n+1010 lpm 80 000100\n");
    Release();
    runtime.Advance(1000);
    keys->m_allowContinuous = true;
    Press(kPlay);
    effects.Take();
    IL::BreakThread(standStill, task.get());
    runtime.RunUntilIdle();
    EXPECT_EQ(effects.Take(), "");
}

TEST_F(BlastStateMachine, KeepsAKeyOnWhereThatIsSafeAndTakesTheNextAtOnce)
{
    const std::string pressed = "+0 answer ''\n+0 lpm 82 000701080318000000\n";
    const std::string held = pressed + "+900 answer ''\n+900 lpm 80 000100\n";
    Start();
    keys->m_allowContinuous = true;
    TakeLog();
    EXPECT_EQ(Hold(kPlay, 900), held);
    EXPECT_TRUE(TakeLog().starts_with("3 Sending continuous key\n"));
    Press(kPlay);
    Release();
    EXPECT_EQ(effects.Take(), pressed + "+0 answer ''\n+0 lpm 80 000100\n");
    Press(kPlay);
    EXPECT_EQ(effects.Take(), pressed);
    Release();
    runtime.Advance(1000);
    effects.Take();
    keys->m_allowContinuous = false;
    AllowByList();
    EXPECT_EQ(Hold(kPlay, 900), held);
}

// A press of another key shows whether the machine is idle, and so when the last pause ended.
TEST_F(BlastStateMachine, IsBusyUntilTheKeyDelayHasPassed)
{
    struct Row {
        const char* name;
        std::uint32_t answerMs;
        std::uint32_t releaseMs;
        std::uint32_t idleMs;  // the first time at which a press is taken
    };
    constexpr Row kRows[] = {
        // end at the release, answer 20 ms behind it, 200 ms of pause
        {"release while sending", 20, 50, 270},
        // end at 120; release begins the wait anew, answer at 220
        {"release while the end is awaited", 100, 150, 420},
        // the answer is lost; the wait that the release began anew at 150 ends at 350
        {"release while the end is awaited, lost answer", 100000, 150, 550},
        // answer at 140; the pause goes on from there, and the release counts as a tick
        {"release in the pause", 20, 200, 330},
        // the answer never comes: 200 ms, then the pause; when held, both begin at 120
        {"lost answer", 100000, 50, 450},
        {"lost answer, held", 100000, 400, 510},
    };
    for (const Row& row : kRows) {
        SCOPED_TRACE(row.name);
        lpm.AnswerAfter(row.answerMs);
        Start();
        for (const std::uint32_t early : {10U, 0U}) {
            Press(kPlay);
            runtime.Advance(row.releaseMs);
            Release();
            runtime.Advance(row.idleMs - early - row.releaseMs);
            effects.Take();
            Press(kTvPower);
            const bool taken = effects.Take().find("lpm 80 00070108030180") != std::string::npos;
            EXPECT_EQ(taken, early == 0) << "early " << early;
            Release();
            runtime.Advance(2000);
        }
    }
}

TEST_F(BlastStateMachine, ShorterDelayShortensThePauseAndALateAnswerIsIgnored)
{
    Start();
    keys->SetKeyDelay(25, 50);
    EXPECT_EQ(keys->GetKeyDelay().keyDelay, 25U);
    EXPECT_EQ(keys->GetKeyDelay().maxBlastTime, 50U);
    lpm.AnswerAfter(10);
    EXPECT_EQ(Hold(kPlay, 100),
              "+0 answer ''\n+0 lpm 80 000701080318ff0000\n"
              "+50 lpm 80 000100\n"
              "+90 lpm 82 000701080318000000\n"
              "+100 answer ''\n+100 lpm 80 000100\n");
    // given up at 80, idle at 110; the answer at 90 changes nothing
    lpm.AnswerAfter(40);
    Press(kPlay);
    runtime.Advance(100);
    Press(kPlay);
    runtime.Advance(10);
    Press(kPlay);
    EXPECT_EQ(effects.Take(),
              "+0 answer ''\n+0 lpm 80 000701080318ff0000\n"
              "+50 lpm 80 000100\n"
              "+100 answer ''\n"
              "+110 answer ''\n+110 lpm 80 000701080318ff0000\n");
}

// The ticks that a state missed are made up for; those missed before it do not count.
TEST_F(BlastStateMachine, ATaskThatWasHeldUpTakesNothingFromThePause)
{
    Start();
    keys->SetKeyDelay(25, 50);
    Press(kPlay);
    runtime.Advance(10);
    IL::BreakThread([this] { runtime.Advance(90); }, task.get());
    runtime.Advance(150);
    EXPECT_EQ(effects.Take(),
              "+0 answer ''\n+0 lpm 80 000701080318ff0000\n"
              "+100 lpm 80 000100\n+150 lpm 82 000701080318000000\n");
}

TEST_F(BlastStateMachine, PowerIsAlwaysASinglePress)
{
    Start();
    for (const bool continuous : {false, true}) {
        keys->m_allowContinuous = continuous;
        Press(kTvPower);
        EXPECT_EQ(effects.Take(), "+0 answer ''\n+0 lpm 80 000701080301800000\n");
        Release();
        runtime.Advance(1000);
        effects.Take();
    }
}

TEST_F(BlastStateMachine, WhitelistCountsDuringAPress)
{
    Start();
    Press(kPlay);
    AllowByList();
    runtime.Advance(500);
    EXPECT_EQ(effects.Take(), "+0 answer ''\n+0 lpm 80 000701080318ff0000\n");
    codesets.cacheCodesets({});
    runtime.Advance(10);
    EXPECT_EQ(effects.Take(), "+10 lpm 80 000100\n");
}

TEST_F(BlastStateMachine, StrayEventsDoNothing)
{
    Start();
    Release();
    keys->HandleBlastState(BlastEndDone, "", 255);
    keys->HandleBlastState(BlastTick, "", 255);
    runtime.Advance(1000);
    EXPECT_EQ(effects.Take(), "+0 answer ''\n");
    Press(kPlay);
    keys->HandleBlastState(BlastEndDone, "", 255);
    Press(kTvPower);
    EXPECT_EQ(effects.Take(), "+0 answer ''\n+0 lpm 80 000701080318ff0000\n+0 answer ''\n");
}

}  // namespace
