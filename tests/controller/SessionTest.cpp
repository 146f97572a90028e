// SPDX-License-Identifier: Apache-2.0

#include "controller/Session.h"

#include <utility>

#include <fmt/format.h>
#include <gtest/gtest.h>

#include "ControlledService.h"
#include "ProtoBufs/Trellan_Service.pb.h"
#include "orlu/ProtoToMarkup.h"
#include "support/Effects.h"

namespace Controller {

namespace {

using namespace TrellanServiceMessages;

/// One session of the program.
class Program {
public:
    Program(const std::string& name, const std::vector<std::string>& words, Effects& effects)
        : m_task(IL::CreateTask(name, "")),
          m_session(m_task.get(), *ReadArguments(words).command,
                    {.line = [&effects, name](auto line) { effects.Add(name + " " + line); },
                     .complaint = [&effects, name](auto text) { effects.Add(name + "! " + text); },
                     .ready = [&effects, name] { effects.Add(name + " ready"); },
                     .end =
                         [&effects, name](int code) {
                             effects.Add(name + " ends " + std::to_string(code));
                         }})
    {
        Do([](Session& session) { session.Start(); });
    }

    void Do(const std::function<void(Session&)>& work)
    {
        IL::BreakThread([this, work] { work(m_session); }, m_task.get());
        static_cast<VirtualRuntime&>(Orlu::Runtime()).RunUntilIdle();
    }

private:
    std::shared_ptr<NotifyTargetTaskIF> m_task;
    Session m_session;
};

class Sessions : public ::testing::Test {
protected:
    std::unique_ptr<Program> Start(const std::string& name, const std::vector<std::string>& words)
    {
        return std::make_unique<Program>(name, words, effects);
    }

    VirtualRuntime runtime;
    Effects effects{runtime};
    Service service{effects};
};

TEST_F(Sessions, AskOneQuestionAndEndWithItsAnswer)
{
    const auto ask = Start("ask", {"has-key", "T2051", "7"});
    EXPECT_EQ(effects.Take(),
              "+0 service 4 {\"ciCode\":\"T2051\",\"ueiKey\":7}\n"
              "+0 ask {\"ciCode\":\"T2051\",\"ueiKey\":7}\n"
              "+0 ask ends 0\n");
    const auto tell = Start("tell", {"sources", "T2051"});
    EXPECT_EQ(effects.Take(),
              "+0 tell {\"sent\": true}\n"
              "+0 tell ends 0\n"
              "+0 service 1 {\"ciCode\":[\"T2051\"]}\n");
}

TEST_F(Sessions, HoldAKeyForItsTimeOrUntilTheyAreInterrupted)
{
    const std::string press =
        "{\"keyVal\":36,\"keyAction\":\"KEY_ACTION_CONTINUOUS_PRESS\",\"codeset\":\"T1\"}";
    const std::string end =
        "{\"keyVal\":36,\"keyAction\":\"KEY_ACTION_END_PRESS\",\"codeset\":\"T1\"}";
    const auto key = Start("key", {"key", "T1", "36", "--hold", "500"});
    runtime.Advance(500);
    EXPECT_EQ(effects.Take(), "+0 service 0 " + press + "\n+0 key " + press + "\n+500 service 0 " +
                                  end + "\n+500 key " + end + "\n+500 key ends 0\n");

    const auto cut = Start("cut", {"key", "T1", "36", "--hold", "500"});
    effects.Take();
    cut->Do(&Session::Interrupt);
    EXPECT_EQ(effects.Take(), "+0 cut ends 0\n+0 service 0 " + end + "\n");

    for (const bool interrupted : {false, true}) {
        const auto lost = Start("lost", {"key", "T1", "36", "--hold", "500"});
        service.Close();
        runtime.Advance(100);
        effects.Take();
        if (interrupted) {
            lost->Do(&Session::Interrupt);
        }
        runtime.Advance(400);
        const std::string at = interrupted ? "+0 " : "+400 ";
        EXPECT_EQ(effects.Take(), at + "service 0 " + end + "\n" + at + "lost " + end + "\n" + at +
                                      "lost ends 0\n");
    }
}

TEST_F(Sessions, EndWithTheirCodeWithoutAnAnswer)
{
    service.answers = false;
    const auto silent = Start("silent", {"cloud"});
    effects.Take();
    runtime.Advance(120000);
    EXPECT_EQ(effects.Take(),
              "+120000 silent! no answer within 120 seconds\n"
              "+120000 silent ends 1\n");

    const auto dropped = Start("dropped", {"cloud"});
    effects.Take();
    service.Close();
    EXPECT_EQ(effects.Take(),
              "+0 dropped! the connection was closed before the answer\n"
              "+0 dropped ends 1\n");
}

TEST_F(Sessions, GoOnBehindABadLineAndEndWithTheLastAnswer)
{
    service.answers = false;
    const auto lines = Start("lines", {"-"});
    lines->Do([](Session& session) {
        for (const char* line : {"6 {}", "", "12 {}", R"(1 {"ciCode": ["T1"]})"}) {
            session.Line(line);
        }
        session.InputEnded();
    });
    EXPECT_EQ(effects.Take(),
              "+0 lines ready\n"
              "+0 lines! line 3: no message has the id 12\n"
              "+0 service 6 {}\n"
              "+0 service 1 {\"ciCode\":[\"T1\"]}\n");
    CloudConnectState_t connected;
    connected.set_connectstate(true);
    service.Event(7, connected);
    service.AnswerBackwards();
    EXPECT_EQ(effects.Take(),
              "+0 lines {\"id\": 7, \"kind\": \"event\", \"message\": {\"connectState\":true}}\n"
              "+0 lines {\"id\": 6, \"kind\": \"reply\", \"message\": {}}\n"
              "+0 lines ends 0\n");
}

TEST_F(Sessions, RelayForOtherSessions)
{
    service.answers = false;
    const auto watch = Start("watch", {"watch"});
    const auto first = Start("first", {"keymap", "T1"});
    const auto second = Start("second", {"keymap", "T2"});
    const auto lines = Start("lines", {"-"});
    effects.Take();
    service.AnswerBackwards();
    service.Event(9, BlasterSync_t());
    EXPECT_EQ(effects.Take(),
              "+0 watch {\"id\": 2, \"kind\": \"reply\", \"message\": {\"ciCode\":\"T2\"}}\n"
              "+0 watch {\"id\": 2, \"kind\": \"reply\", \"message\": {\"ciCode\":\"T1\"}}\n"
              "+0 first {\"ciCode\":\"T1\"}\n"
              "+0 first ends 0\n"
              "+0 second {\"ciCode\":\"T2\"}\n"
              "+0 second ends 0\n"
              "+0 watch {\"id\": 9, \"kind\": \"event\", \"message\": {}}\n"
              "+0 lines {\"id\": 9, \"kind\": \"event\", \"message\": {}}\n");
    EXPECT_EQ(service.clients, 1);

    watch->Do(&Session::Interrupt);
    EXPECT_EQ(effects.Take(),
              "+0 watch ends 0\n"
              "+0 lines! TrellanService closed the connection: it ended, or took another client\n"
              "+0 lines ends 3\n");
}

TEST(SessionsAlone, TryForThreeSeconds)
{
    VirtualRuntime runtime;
    Effects effects(runtime);
    const Program never("never", {"cloud"}, effects);
    runtime.Advance(3500);
    EXPECT_EQ(effects.Take(),
              "+3000 never! TrellanService does not answer; is it running?\n+3000 never ends 3\n");

    const Program patient("patient", {"cloud"}, effects);
    runtime.Advance(1000);
    const Service service(effects);
    runtime.Advance(2000);
    EXPECT_TRUE(effects.Take().ends_with("patient ends 0\n"));
}

}  // namespace

}  // namespace Controller
