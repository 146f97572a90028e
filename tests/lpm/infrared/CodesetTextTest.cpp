// SPDX-License-Identifier: Apache-2.0

#include "lpm/codesets/CodesetText.h"

#include <gtest/gtest.h>

#include <sys/wait.h>

#include <algorithm>
#include <cstdlib>

#include "infrared/CodesetBinary.h"
#include "support/TemporaryRoot.h"

using namespace Lpm;

namespace {

TEST(CodesetText, BecomesTheBinaryOfItsGroupsAndKeys)
{
    std::string why;
    const auto bytes = CompileCodeset(
        R"({"about": "two in one", "groups": [
              {"protocol": "rc5", "keys": {"kKey_STOP": "0x1e36", "PLAY": "7733"}},
              {"protocol": "nec", "carrierKHz": 40, "minimumFrames": 2,
               "keys": {"Netflix": "0xa501", "_100": "0"}},
              {"protocol": "raw", "carrierKHz": 36,
               "keys": {"MUTE": [900, 1800, 900, 9000], "POWER": [900, 9000, 1800, 9000]}}]})",
        why);
    ASSERT_TRUE(bytes) << why;
    const auto codeset = CodesetBinary::Parse(*bytes, why);
    ASSERT_TRUE(codeset) << why;
    const std::vector<CodesetGroup> groups = {
        {.protocol = Protocol::kRc5},
        {.protocol = Protocol::kNec, .carrierKHz = 40, .minimumFrames = 2},
        {.protocol = Protocol::kRaw,
         .carrierKHz = 36,
         .rawDurationsUs = {900, 1800, 9000},
         .rawSequences = {{.press = {0, 1, 0, 2}, .repeat = {}},
                          {.press = {0, 2, 1, 2}, .repeat = {}}}}};
    EXPECT_EQ(codeset->Groups(), groups);
    const std::vector<CodesetKey> keys = {{1, 2, 1},       {8, 2, 0},       {20, 1, 0},
                                          {24, 0, 0x1e35}, {25, 0, 0x1e36}, {134, 1, 0xa501}};
    EXPECT_EQ(codeset->Keys(), keys);
}

TEST(CodesetText, SaysWhatIsWrongWithIt)
{
    const struct {
        std::string_view text;
        std::string_view why;
    } rows[] = {
        {R"({"group": []})", "unknown member 'group'"},
        {R"({"groups": {}})", "'groups' is no list of at most 255"},
        {R"({"groups": [7]})", "an object is missing"},
        {R"({"groups": [{"keys": {}}]})", "a group has no known protocol"},
        {R"({"groups": [{"protocol": "raw", "keys": {"MUTE": [500, 65536]}}]})",
         "MUTE: a duration is no number from 1 to 65535"},
        {R"({"groups": [{"protocol": "raw", "keys": {"MUTE": [1,2,3,4,5,6,7,8,9,10,11,12,13,14,
            15,16,17]}}]})",
         "a raw group has more than 16 different durations"},
        {R"({"groups": [{"protocol": "nec", "minimumFrames": 256, "keys": {}}]})",
         "minimumFrames is no number from 1 to 255"},
        {R"({"groups": [{"protocol": "nec", "keys": {"power": "1"}}]})", "'power' is no key"},
        {R"({"groups": [{"protocol": "nec", "keys": {"POWER": "1", "kKey_POWER": "2"}}]})",
         "key 1 stands behind key 1"},
    };
    std::string why;
    for (const auto& row : rows) {
        EXPECT_FALSE(CompileCodeset(row.text, why)) << row.text;
        EXPECT_EQ(why, row.why) << row.text;
    }
    for (const std::string_view text : {"", "{", R"({"groups": [], "groups": []})"}) {
        EXPECT_FALSE(CompileCodeset(text, why)) << text;
    }
}

TEST(CodesetCompiler, ReplacesTheBinaryOrLeavesItAndSaysWhy)
{
    const TemporaryRoot folder;
    folder.Write("/good", R"({"groups": [{"protocol": "jvc", "keys": {"POWER": "0xa317"}}]})");
    folder.Write("/bad", R"({"groups": [{"protocol": "jvc", "keys": {"POWER": "0x1a317"}}]})");
    const auto run = [&folder](const std::string& words) {
        const std::string command =
            "cd " + folder.Path() + " && " CODESET_COMPILER " " + words + " >said 2>&1";
        return WEXITSTATUS(std::system(command.c_str()));
    };
    EXPECT_EQ(run("good out"), 0) << folder.Read("/said");
    EXPECT_EQ(folder.Read("/said"), "");
    EXPECT_EQ(run("bad out"), 1);
    EXPECT_EQ(folder.Read("/said"),
              "CodesetCompiler: bad: POWER: scancode 0x1a317 does not fit jvc, whose bits are "
              "0xffff\n");
    EXPECT_EQ(folder.Read("/out").size(), 20u);
    EXPECT_EQ(run("good absent/out"), 1);
    EXPECT_EQ(run("absent out"), 1);
    for (const char* const usage : {"", "one", "--unknown", "one two three"}) {
        EXPECT_EQ(run(usage), 2) << usage;
        EXPECT_EQ(std::ranges::count(folder.Read("/said"), '\n'), 1) << folder.Read("/said");
    }
}

}  // namespace
