// SPDX-License-Identifier: Apache-2.0

#include "lpm/codesets/CodesetText.h"

#include <gtest/gtest.h>

#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "infrared/CodesetBinary.h"

using namespace Lpm;

namespace {

std::string Contents(const std::string& path)
{
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

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
        {R"([])", "an object is missing"},
        {R"({"group": []})", "unknown member 'group'"},
        {R"({"about": 1, "groups": []})", "'about' is no text"},
        {R"({"groups": {}})", "'groups' is no list of at most 255"},
        {R"({"groups": [7]})", "an object is missing"},
        {R"({"groups": [{"keys": {}}]})", "a group has no known protocol"},
        {R"({"groups": [{"protocol": "raw", "keys": {}}]})", "a raw group has no carrier"},
        {R"({"groups": [{"protocol": "raw", "keys": {"MUTE": "0"}}]})",
         "MUTE: no list of at most 254 durations"},
        {R"({"groups": [{"protocol": "raw", "keys": {"MUTE": [500, 65536]}}]})",
         "MUTE: a duration is no number from 1 to 65535"},
        {R"({"groups": [{"protocol": "raw", "keys": {"MUTE": [1,2,3,4,5,6,7,8,9,10,11,12,13,14,
            15,16,17]}}]})",
         "a raw group has more than 16 different durations"},
        {R"({"groups": [{"protocol": "nec"}]})", "a group has no keys"},
        {R"({"groups": [{"protocol": "nec", "minimumFrames": 256, "keys": {}}]})",
         "minimumFrames is no number from 1 to 255"},
        {R"({"groups": [{"protocol": "nec", "minimumFrames": 9, "keys": {}}]})",
         "a press of 9 frames"},
        {R"({"groups": [{"protocol": "nec", "carrierKHz": "38", "keys": {}}]})",
         "carrierKHz is no number from 1 to 255"},
        {R"({"groups": [{"protocol": "nec", "keys": {"INVALID": "1"}}]})", "'INVALID' is no key"},
        {R"({"groups": [{"protocol": "nec", "keys": {"power": "1"}}]})", "'power' is no key"},
        {R"({"groups": [{"protocol": "nec", "keys": {"POWER": 1}}]})",
         "POWER: the scancode is no text"},
        {R"({"groups": [{"protocol": "nec", "keys": {"POWER": "0x10000"}}]})",
         "POWER: scancode 0x10000 does not fit nec, whose bits are 0xffff"},
        {R"({"groups": [{"protocol": "nec", "keys": {"POWER": "1", "kKey_POWER": "2"}}]})",
         "key 1 stands behind key 1"},
    };
    for (const auto& row : rows) {
        std::string why;
        EXPECT_FALSE(CompileCodeset(row.text, why)) << row.text;
        EXPECT_EQ(why, row.why) << row.text;
    }
    for (const std::string_view text : {"", "{", R"({"groups": [], "groups": []})"}) {
        std::string why;
        EXPECT_FALSE(CompileCodeset(text, why)) << text;
        EXPECT_NE(why, "") << text;
    }
}

TEST(OurCodesets, HoldTheKeysThatTheirDevicesKnow)
{
    const struct {
        std::string name;
        std::uint8_t key;
        Protocol protocol;
        std::uint32_t scancode;
    } rows[] = {
        {"T2051", 1, Protocol::kNecx, 0x5bc401},      {"T2051", 18, Protocol::kNecx, 0x5bc410},
        {"T2051", 22, Protocol::kNecx, 0x5bc420},     {"T2051", 76, Protocol::kNecx, 0x5bc424},
        {"T2051", 121, Protocol::kNecx, 0x5bc437},    {"S0456", 1, Protocol::kRc6Mce, 0x80340001},
        {"S0456", 42, Protocol::kRc6Mce, 0x80340034}, {"S0456", 105, Protocol::kRc6Mce, 0x80340046},
        {"Y0812", 1, Protocol::kSony20, 0x1a4915},    {"Y0812", 24, Protocol::kSony20, 0x1a4932},
        {"Y0812", 41, Protocol::kSony20, 0x1a497c},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name + " " + std::to_string(row.key));
        const std::string bytes = Contents(std::string(CODESET_BINARIES) + "/" + row.name + ".bin");
        std::string why;
        const auto codeset =
            CodesetBinary::Parse(std::vector<std::uint8_t>(bytes.begin(), bytes.end()), why);
        ASSERT_TRUE(codeset) << why;
        const CodesetKey* key = codeset->Find(row.key);
        ASSERT_NE(key, nullptr);
        EXPECT_EQ(key->scancode, row.scancode);
        EXPECT_EQ(codeset->Groups()[key->group].protocol, row.protocol);
    }
}

class Compiler : public testing::Test {
protected:
    Compiler() { std::filesystem::create_directories(m_folder); }
    ~Compiler() override { std::filesystem::remove_all(m_folder); }

    std::string Path(const std::string& name) const { return m_folder + "/" + name; }

    void Write(const std::string& name, std::string_view text) const
    {
        std::ofstream(Path(name), std::ios::binary) << text;
    }

    /// Its exit code; what it says on either stream goes to `said`.
    int Run(const std::string& arguments) const
    {
        const std::string command =
            std::string(CODESET_COMPILER) + " " + arguments + " >" + Path("said") + " 2>&1";
        return WEXITSTATUS(std::system(command.c_str()));
    }

    const std::string m_folder =
        testing::TempDir() + "codeset_compiler_" + std::to_string(getpid());
};

TEST_F(Compiler, ReplacesTheBinaryOrLeavesItAndSaysWhy)
{
    Write("good", R"({"groups": [{"protocol": "jvc", "keys": {"POWER": "0xa317"}}]})");
    Write("bad", R"({"groups": [{"protocol": "jvc", "keys": {"POWER": "0x1a317"}}]})");
    EXPECT_EQ(Run(Path("good") + " " + Path("out")), 0) << Contents(Path("said"));
    EXPECT_EQ(Contents(Path("said")), "");
    const std::string binary = Contents(Path("out"));
    EXPECT_EQ(binary.size(), 20u);
    EXPECT_EQ(Run(Path("bad") + " " + Path("out")), 1);
    EXPECT_EQ(Contents(Path("said")),
              "CodesetCompiler: " + Path("bad") +
                  ": POWER: scancode 0x1a317 does not fit jvc, whose bits are 0xffff\n");
    EXPECT_EQ(Contents(Path("out")), binary);
    EXPECT_EQ(Run(Path("good") + " " + Path("absent/out")), 1);
    EXPECT_EQ(Run(Path("absent") + " " + Path("out")), 1);
    EXPECT_EQ(Run("--version"), 0);
    EXPECT_EQ(Run("--help"), 0);
    for (const char* const usage : {"", "one", "--unknown", "one two three"}) {
        EXPECT_EQ(Run(usage), 2) << usage;
        const std::string said = Contents(Path("said"));
        EXPECT_EQ(std::count(said.begin(), said.end(), '\n'), 1) << said;
    }
}

}  // namespace
