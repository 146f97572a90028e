// SPDX-License-Identifier: Apache-2.0

#include "lpm/Blaster.h"

#include <fmt/format.h>
#include <gtest/gtest.h>

#include "LpmFixture.h"

using namespace Lpm;

namespace {

std::string StoreFrame(std::string_view device = "1234")
{
    const std::string data = TestCodeset();
    return fmt::format("{:04x}22{}{}", data.size() / 2 + 3, device, data);
}

/// A blaster with the test's code set as 0x1234.
class HeldBlaster : public testing::Test {
protected:
    HeldBlaster() { fixture.Hold(0x1234); }

    LpmFixture fixture;
};

TEST(Blaster, AnswersEveryFrame)
{
    const struct {
        const char* name;
        std::string frame;
        const char* reply;
    } rows[] = {
        {"empty", "", "0101"},
        {"no command", "0000", "0101"},
        {"length too large", "000200", "0101"},
        {"unknown command", "000142", "0102"},
        {"end key without a key", "000100", "0100"},
        {"version", "00010b", "03000100"},
        {"empty list", "000111", "020000"},
        {"key of an absent code set", "000701123401800000", "0104"},
        {"key map of an absent code set", "0003021234", "0104"},
        {"store", StoreFrame(), "0100"},
        {"store of a second", StoreFrame("0009"), "0100"},
        {"store of nothing", "0003221234", "0106"},
        {"store of no code set", "000622123401ff02", "0106"},
        {"list, lowest first", "000111", "06000200091234"},
        {"key map", "0003021234", "0400010809"},
        {"key map with an argument more", "000402123400", "0101"},
        {"held key", "000701123401000000", "0100"},
        {"first burst", "000701123408ff0000", "0100"},
        {"absent key", "000701123402800000", "0105"},
        {"invalid key", "0007011234ff800000", "0105"},
        {"unknown flag", "000701123401010000", "0103"},
        {"bytes behind the flag", "000701123401800001", "0103"},
        {"short key", "0006011234018000", "0101"},
        {"delete", "00030c0009", "0100"},
        {"list without it", "000111", "0400011234"},
        {"reset of another kind", "00020902", "0103"},
        {"reset", "00020901", "0100"},
    };
    LpmFixture fixture;
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(fixture.Execute(row.frame), row.reply);
    }
}

TEST_F(HeldBlaster, RefusesEachDamagedStoreAndKeepsWhatItHolds)
{
    const std::string good = FromHex(StoreFrame()).value();
    for (std::size_t i = 0; i < good.size(); ++i) {
        SCOPED_TRACE(i);
        const std::string cut = ToHex(good.substr(0, i));
        EXPECT_EQ(fixture.Execute(cut), "0101");
        std::string whole = good.substr(0, std::max<std::size_t>(i, 5));
        whole[0] = static_cast<char>((whole.size() - 2) >> 8);
        whole[1] = static_cast<char>(whole.size() - 2);
        EXPECT_EQ(fixture.Execute(ToHex(whole)), "0106");
        std::string damaged = good;
        damaged[i] = static_cast<char>(damaged[i] ^ 0x10);
        EXPECT_EQ(fixture.Execute(ToHex(damaged)), i < 2    ? "0101"
                                                   : i == 2 ? "0102"
                                                   : i < 5  ? "0100"
                                                            : "0106");
        EXPECT_EQ(fixture.Execute("0003021234"), "0400010809");
    }
}

TEST(Blaster, HoldsAtMostItsMaximumAndListsWhatFits)
{
    LpmFixture fixture;
    for (unsigned device = 0; device < Blaster::kMaximumCodesets; ++device) {
        ASSERT_EQ(fixture.Execute(StoreFrame(fmt::format("{:04x}", device))), "0100");
    }
    EXPECT_EQ(fixture.Execute(StoreFrame("1000")), "0107");
    EXPECT_EQ(fixture.Execute(StoreFrame("0000")), "0100");
    const std::string list = fixture.Execute("000111");
    EXPECT_EQ(list.substr(0, 14), "fe007e00000001");
    EXPECT_EQ(list.size(), 510U);
}

TEST_F(HeldBlaster, SendsFramesAtTheirTimes)
{
    const struct {
        const char* name;
        const char* key;
        unsigned heldMs;
        const char* effects;
    } rows[] = {
        {"held past a repeat", "000701123401ff0000", 120,
         "+0 ir 1234 1 on\n+0 light 108000\n+108 light 108000\n+120 ir 1234 1 off\n"},
        {"let go early, whole press", "000701123408000000", 20,
         "+0 ir 1234 8 on\n+0 light 45000\n+20 ir 1234 8 off\n+45 light 45000\n+90 light 45000\n"},
        {"once, ends with its light", "000701123401800000", 500,
         "+0 ir 1234 1 on\n+0 light 108000\n+69 ir 1234 1 off\n"},
        {"once, let go", "000701123408800000", 50,
         "+0 ir 1234 8 on\n+0 light 45000\n+45 light 45000\n+50 ir 1234 8 off\n+90 light 45000\n"},
        {"frames of 10.1 ms", "000701123409000000", 35,
         "+0 ir 1234 9 on\n+0 light 10100\n+11 light 10100\n+21 light 10100\n+31 light 10100\n"
         "+35 ir 1234 9 off\n"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        fixture.effects.Take();
        EXPECT_EQ(fixture.Execute(row.key), "0100");
        fixture.runtime.Advance(row.heldMs);
        EXPECT_EQ(fixture.Execute("000100"), "0100");
        fixture.runtime.Advance(1000);
        EXPECT_EQ(fixture.effects.Take(), row.effects);
    }
}

TEST_F(HeldBlaster, EndsAKeyWithTheNextOne)
{
    fixture.Execute("000701123408000000");
    fixture.runtime.Advance(10);
    fixture.Execute("000701123401800000");
    fixture.runtime.Advance(1000);
    EXPECT_EQ(fixture.effects.Take(),
              "+0 ir 1234 8 on\n+0 light 45000\n"
              "+10 light 45000\n+10 light 45000\n+10 ir 1234 8 off\n"
              "+10 ir 1234 1 on\n+10 light 108000\n+79 ir 1234 1 off\n");
}

TEST_F(HeldBlaster, EndsAKeyWithItsCodeset)
{
    for (const std::string& end :
         {std::string("00030c1234"), std::string("00020901"), StoreFrame()}) {
        SCOPED_TRACE(end);
        fixture.Hold(0x1234);
        fixture.Execute("000701123401000000");
        fixture.runtime.Advance(50);
        fixture.effects.Take();
        EXPECT_EQ(fixture.Execute(end), "0100");
        fixture.runtime.Advance(1000);
        EXPECT_EQ(fixture.effects.Take(), "+0 ir 1234 1 off\n");
    }
}

}  // namespace
