// SPDX-License-Identifier: Apache-2.0

#include "controller/Session.h"

#include <utility>

#include <fmt/format.h>
#include <gtest/gtest.h>

#include "ControlledService.h"
#include "ProtoBufs/Trellan_Service.pb.h"
#include "orlu/ProtoToMarkup.h"
#include "support/VirtualRuntime.h"

namespace Controller {

namespace {

using namespace TrellanServiceMessages;

/// One run of the program.
class Program {
public:
    Program(const std::string& name, const std::vector<std::string>& words,
            const std::function<void(std::string)>& note)
        : m_task(IL::CreateTask(name, "")),
          m_session(
              m_task.get(), *ReadArguments(words).command,
              {.line = [note, name](const std::string& line) { note(name + " " + line); },
               .complaint = [note, name](const std::string& text) { note(name + "! " + text); },
               .ready = [note, name] { note(name + " ready"); },
               .end =
                   [note, name](int code) {
                       note(name + " ends " + std::to_string(code));
                   }})
    {
        Run([this] { m_session.Start(); });
    }

    void Run(std::function<void()> work) { IL::BreakThread(std::move(work), m_task.get()); }

    void Line(const std::string& text)
    {
        Run([this, text] { m_session.Line(text); });
    }
    void InputEnded()
    {
        Run([this] { m_session.InputEnded(); });
    }
    void Interrupt()
    {
        Run([this] { m_session.Interrupt(); });
    }

private:
    std::shared_ptr<NotifyTargetTaskIF> m_task;
    Session m_session;
};

class Sessions : public ::testing::Test {
protected:
    Sessions()
    {
        service.note = Note();
        service.Serve();
    }

    std::function<void(std::string)> Note()
    {
        return [this](const std::string& text) {
            effects += fmt::format("+{} {}\n", runtime.Elapsed(), text);
        };
    }

    std::unique_ptr<Program> Start(const std::string& name, const std::vector<std::string>& words)
    {
        auto program = std::make_unique<Program>(name, words, Note());
        runtime.RunUntilIdle();
        return program;
    }

    std::string Take() { return std::exchange(effects, {}); }

    VirtualRuntime runtime;
    std::string effects;
    Service service;
};

TEST_F(Sessions, AskOneQuestionAndEndWithItsAnswer)
{
    const auto ask = Start("ask", {"has-key", "T2051", "7"});
    EXPECT_EQ(Take(),
              "+0 service 4 {\"ciCode\":\"T2051\",\"ueiKey\":7}\n"
              "+0 ask {\"ciCode\":\"T2051\",\"ueiKey\":7}\n"
              "+0 ask ends 0\n");
    const auto tell = Start("tell", {"sources", "T2051"});
    EXPECT_EQ(Take(),
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
    EXPECT_EQ(Take(), "+0 service 0 " + press + "\n+0 key " + press + "\n");
    runtime.Advance(499);
    EXPECT_EQ(Take(), "");
    runtime.Advance(1);
    EXPECT_EQ(Take(), "+500 service 0 " + end + "\n+500 key " + end + "\n+500 key ends 0\n");

    const auto cut = Start("cut", {"key", "T1", "36", "--hold", "500"});
    Take();
    cut->Interrupt();
    runtime.RunUntilIdle();
    EXPECT_EQ(Take(), "+500 cut ends 0\n+500 service 0 " + end + "\n");

    for (const bool interrupted : {false, true}) {
        const auto lost = Start("lost", {"key", "T1", "36", "--hold", "500"});
        service.Close();
        runtime.Advance(100);
        Take();
        if (interrupted) {
            lost->Interrupt();
        }
        runtime.Advance(400);
        const std::string at = interrupted ? "+1100 " : "+1000 ";
        EXPECT_EQ(Take(), at + "service 0 " + end + "\n" + at + "lost " + end + "\n" + at +
                              "lost ends 0\n");
    }
}

TEST_F(Sessions, EndWithTheirCodeWhenNobodyAnswers)
{
    service.answers = false;
    const auto silent = Start("silent", {"cloud"});
    Take();
    runtime.Advance(120000);
    EXPECT_EQ(Take(), "+120000 silent! no answer within 120 seconds\n+120000 silent ends 1\n");

    const auto dropped = Start("dropped", {"cloud"});
    Take();
    service.Close();
    runtime.RunUntilIdle();
    EXPECT_EQ(Take(),
              "+120000 dropped! the connection was closed before the answer\n"
              "+120000 dropped ends 1\n");

    const auto watch = Start("watch", {"watch"});
    Take();
    service.Close();
    runtime.RunUntilIdle();
    EXPECT_EQ(Take(),
              "+120000 watch! TrellanService closed the connection: it ended, or took another "
              "client\n"
              "+120000 watch ends 3\n");
}

TEST_F(Sessions, GoOnBehindABadLineAndEndWithTheLastAnswer)
{
    service.answers = false;
    const auto lines = Start("lines", {"-"});
    lines->Line("6 {}");
    lines->Line("");
    lines->Line("12 {}");
    lines->Line(R"(1 {"ciCode": ["T1"]})");
    lines->InputEnded();
    runtime.RunUntilIdle();
    EXPECT_EQ(Take(),
              "+0 lines ready\n"
              "+0 lines! line 3: no message has the id 12\n"
              "+0 service 6 {}\n"
              "+0 service 1 {\"ciCode\":[\"T1\"]}\n");
    CloudConnectState_t connected;
    connected.set_connectstate(true);
    service.Event(7, connected);
    service.AnswerBackwards();
    runtime.RunUntilIdle();
    EXPECT_EQ(Take(),
              "+0 lines {\"id\": 7, \"kind\": \"event\", \"message\": {\"connectState\":true}}\n"
              "+0 lines {\"id\": 6, \"kind\": \"reply\", \"message\": {}}\n"
              "+0 lines ends 0\n");
}

TEST_F(Sessions, LetOthersThroughOneConnection)
{
    service.answers = false;
    const auto watch = Start("watch", {"watch"});
    const auto first = Start("first", {"keymap", "T1"});
    const auto second = Start("second", {"keymap", "T2"});
    const auto lines = Start("lines", {"-"});
    Take();
    service.AnswerBackwards();
    service.Event(9, BlasterSync_t());
    runtime.RunUntilIdle();
    EXPECT_EQ(Take(),
              "+0 watch {\"id\": 2, \"kind\": \"reply\", \"message\": {\"ciCode\":\"T2\"}}\n"
              "+0 watch {\"id\": 2, \"kind\": \"reply\", \"message\": {\"ciCode\":\"T1\"}}\n"
              "+0 watch {\"id\": 9, \"kind\": \"event\", \"message\": {}}\n"
              "+0 first {\"ciCode\":\"T1\"}\n"
              "+0 first ends 0\n"
              "+0 second {\"ciCode\":\"T2\"}\n"
              "+0 second ends 0\n"
              "+0 lines {\"id\": 9, \"kind\": \"event\", \"message\": {}}\n");
    EXPECT_EQ(service.clients, 1);

    watch->Interrupt();
    runtime.RunUntilIdle();
    EXPECT_EQ(Take(),
              "+0 watch ends 0\n"
              "+0 lines! TrellanService closed the connection: it ended, or took another client\n"
              "+0 lines ends 3\n");
}

TEST(SessionsAlone, TryForThreeSeconds)
{
    VirtualRuntime runtime;
    std::string effects;
    const auto note = [&runtime, &effects](const std::string& text) {
        effects += fmt::format("+{} {}\n", runtime.Elapsed(), text);
    };
    Program never("never", {"cloud"}, note);
    runtime.Advance(3500);
    EXPECT_EQ(effects,
              "+3000 never! TrellanService does not answer; is it running?\n+3000 never ends 3\n");

    effects.clear();
    Program patient("patient", {"cloud"}, note);
    runtime.Advance(1000);
    Service service;
    service.note = note;
    service.Serve();
    runtime.Advance(2000);
    EXPECT_TRUE(effects.ends_with("patient ends 0\n")) << effects;
}

}  // namespace

}  // namespace Controller
