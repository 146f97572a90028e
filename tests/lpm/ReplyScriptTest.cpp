// SPDX-License-Identifier: Apache-2.0

#include "lpm/ReplyScript.h"

#include <fmt/format.h>
#include <gtest/gtest.h>

#include "LpmFixture.h"

using namespace Lpm;

namespace {

TEST(ReplyScript, RefusesWhatIsNoScriptAndKeepsTheOneBefore)
{
    const std::pair<const char*, const char*> rows[] = {
        {R"("command": "0x100")", "\"command\" is no text like \"0x22\""},
        {R"("command": "0x22", "staus": 7)", "unknown member \"staus\""},
        {R"("command": "0x22", "delayMs": "20")", "\"delayMs\" is not a whole number"},
        {R"("command": "0x22", "times": -1)", "\"times\" is out of range"},
        {R"("command": "0x22", "silent": 1)", "\"silent\" is not true or false"},
        {R"("command": "0x22", "raw": "010")", "\"raw\" is no hexadecimal bytes"},
    };
    std::string why;
    ReplyScript script;
    ASSERT_TRUE(script.Load(R"({"replies": [{"command": "0x22", "status": 7}]})", why)) << why;
    for (const auto& [members, reason] : rows) {
        EXPECT_FALSE(script.Load(fmt::format(R"({{"replies": [{{{}}}]}})", members), why));
        EXPECT_EQ(why, std::string("reply 0: ") + reason);
    }
    for (const std::string& text :
         {std::string("{}"), std::string(R"({"reply": []})"), std::string(R"({"replies": [7]})"),
          std::string("{\"replies\": []}\xff"), "{\"replies\":" + std::string(100, '[')}) {
        EXPECT_FALSE(script.Load(text, why)) << text;
    }
    EXPECT_EQ(script.Take(0x22).status, 7);
}

TEST(ReplyScript, ChangesAnswersUntilItsTimesAreUsedUp)
{
    LpmFixture fixture;
    fixture.Hold(0x0803);
    LpmTestClient client(fixture, "a");
    fixture.SendLine(R"({"replies": [
        {"command": "0x01", "status": 7, "times": 1},
        {"command": "0x0b", "delayMs": 20, "times": 1},
        {"command": "0x0b", "silent": true, "times": 1},
        {"command": "0x02", "raw": "0107"},
        {"command": "0x00", "status": 9},
        {"command": "0x0c", "status": 8}]})");
    fixture.effects.Take();
    client.Send(80, "000701080301800000");
    client.Send(80, "000701080301000000");
    client.Send(80, "000100");
    for (int i = 0; i < 3; ++i) {
        client.Send(80, "00010b");
    }
    client.Send(84, "0003020803");
    fixture.runtime.Advance(200);
    client.Send(80, "00030c0803");
    client.Send(80, "000111");
    EXPECT_EQ(fixture.effects.Take(),
              "+0 a reply 80 0107\n"
              "+0 ir 0803 1 on\n+0 light 108000\n+0 a reply 80 0100\n"
              "+0 ir 0803 1 off\n+0 a reply 80 0109\n"
              "+0 a reply 80 03000100\n"
              "+0 a event 65541 type 11 0107\n"
              "+20 a reply 80 03000100\n"
              "+200 a reply 80 0108\n"
              "+200 a reply 80 020000\n");
}

TEST(ReplyScript, ChangesBothAnswersToAStore)
{
    const struct {
        const char* reply;
        const char* effects;
        const char* list;
    } rows[] = {
        {R"("status": 7)", "+0 a reply 65539 result 0\n+0 a event 83 0107\n", "020000"},
        {R"("bulkResult": -3, "delayMs": 30)", "+30 a reply 65539 result -3\n", "020000"},
        {R"("silent": true)", "+0 a reply 65539 result 0\n", "0400010803"},
        {R"("delayMs": 40)", "+0 a reply 65539 result 0\n+40 a event 83 0100\n", "0400010803"},
    };
    LpmFixture fixture;
    LpmTestClient client(fixture, "a");
    const std::string data = TestCodeset();
    const std::string frame = fmt::format("{:04x}220803{}", data.size() / 2 + 3, data);
    for (const auto& row : rows) {
        SCOPED_TRACE(row.reply);
        fixture.Execute("00020901");
        fixture.SendLine(fmt::format(R"({{"replies": [{{"command": "0x22", {}}}]}})", row.reply));
        fixture.effects.Take();
        client.Transfer(frame);
        fixture.runtime.Advance(100);
        EXPECT_EQ(fixture.effects.Take(), row.effects);
        EXPECT_EQ(fixture.Execute("000111"), row.list);
    }
}

}  // namespace
