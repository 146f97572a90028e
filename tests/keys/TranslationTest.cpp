// SPDX-License-Identifier: Apache-2.0

#include "KeyFixture.h"

#include <algorithm>
#include <map>
#include <string_view>
#include <utility>

#include "keys/KeyResolution.h"
#include "keys/KeyTables.h"

using namespace TrellanService;

namespace {

/// The number behind `text` up to anything else; `text` then begins there.
unsigned TakeNumber(std::string_view& text)
{
    unsigned number = 0;
    for (; !text.empty() && text[0] >= '0' && text[0] <= '9'; text.remove_prefix(1)) {
        number = number * 10 + static_cast<unsigned>(text[0] - '0');
    }
    return number;
}

/// Columns A C H N T V Y; A stands for A D M R, C for C S. In a cell "17:21 25" is key 21 where bit
/// 17 is set, else 25; 255 where nothing is left.
struct ResolutionCells {
    std::uint32_t orluKey;
    const char* cells[7];
};

constexpr const char* kColumns[7] = {"ADMR", "CS", "H", "N", "T", "V", "Y"};
constexpr const char* kStop = "26:25 26";
constexpr const char* kEnter = "1:42 0:19";
constexpr const char* kOn = "24:2 1";
constexpr const char* kOff = "25:3 1";
constexpr ResolutionCells kResolution[] = {
    {20, {"", "17:21 25", "", "17:21 5:37", "17:21 5:37", "", "25"}},
    {26, {kStop, kStop, kStop, kStop, kStop, kStop, kStop}},
    {87,
     {"23:27 14:31", "23:27 13:100 14:31", "", "23:27 14:31", "23:27 13:100 14:31",
      "23:27 13:100 14:31", "23:27 13:100 14:31"}},
    {88,
     {"22:28 8:30", "22:28 7:99 8:30", "", "22:28 8:30", "22:28 7:99 8:30", "22:28 7:99 8:30",
      "22:28 7:99 8:30"}},
    {89, {"", "13:100 14:31", "", "13:100 14:31", "13:100 14:31", "", "14:31 13:100"}},
    {90, {"", "7:99 8:30", "", "7:99 8:30", "7:99 8:30", "", "8:30 7:99"}},
    {100, {"46", "46", "", "46", "46", "", "46"}},
    {140, {kOn, kOn, kOn, kOn, kOn, kOn, kOn}},
    {144, {"33", "12:33 11:123", "33", "33", "12:33 11:123", "33", "18:97 12:33"}},
    {160, {"40", "4:40 5:37", "40", "4:40 5:37", "4:40 5:37", "40", "40"}},
    {182, {"", "2:96 3:105 6:72", "", "", "72", "", "98"}},
    {193,
     {"", "9:121 15:87 16:86", "", "9:121 10:98 15:87 16:86", "16:86 9:121 15:87", "",
      "9:121 15:87 16:86"}},
    {204, {kOff, kOff, kOff, kOff, kOff, kOff, kOff}},
    {224, {kEnter, kEnter, kEnter, kEnter, kEnter, kEnter, kEnter}},
};

TEST(Resolution, TakesTheFirstCandidateThatTheCodesetHolds)
{
    for (const auto& [orluKey, cells] : kResolution) {
        for (std::size_t column = 0; column < std::size(kColumns); ++column) {
            for (const char letter : std::string_view(kColumns[column])) {
                SCOPED_TRACE(testing::Message() << orluKey << " " << letter);
                const std::string codeset = std::string(1, letter) + "0001";
                // Each candidate in turn is held by nobody any more, nor is what stands before it.
                std::uint32_t bits = ~0U;
                unsigned last = 255;
                for (std::string_view cell = cells[column]; !cell.empty() && last == 255;) {
                    const unsigned number = TakeNumber(cell);
                    if (cell.empty()) {
                        last = number;
                        break;
                    }
                    cell.remove_prefix(1);
                    EXPECT_EQ(ResolveKey(orluKey, codeset, bits), TakeNumber(cell));
                    bits &= ~(1U << number);
                    cell.remove_prefix(cell.empty() ? 0 : 1);
                }
                EXPECT_EQ(ResolveKey(orluKey, codeset, bits), last);
            }
        }
        for (const char* codeset : {"", "t2051", "B0001", "X0001"}) {
            EXPECT_EQ(ResolveKey(orluKey, codeset, ~0U), 255) << codeset;
        }
    }
    EXPECT_EQ(ResolveKey(193, "T2051", 0), 121);
    EXPECT_EQ(ResolveKey(193, "T2051", 1U << 16), 121);
    EXPECT_EQ(ResolveKey(193, "T20510", 0), 255);
    EXPECT_EQ(ResolveKey(144, "T2051", 0), 255);
}

TEST(UEIKeyNames, FollowTheSchemaButForOne)
{
    const auto& values = *UEIKeyNamesPB::ueikey_descriptor();
    ASSERT_EQ(values.value_count(), std::ssize(UEIKeyNameTable));
    EXPECT_TRUE(UEIKeySchemaName(0).empty() && UEIKeySchemaName(245).empty());
    for (int i = 0; i < values.value_count(); ++i) {
        std::string expected = i == 20 ? "O_KEY__0" : "O_" + values.value(i)->name().substr(1);
        std::ranges::transform(expected, expected.begin(),
                               [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
        const auto& row = UEIKeyNameTable[static_cast<std::size_t>(i)];
        EXPECT_EQ(row.name, expected);
        EXPECT_EQ(row.key, i == 0 ? -1 : i);
        EXPECT_EQ(UEIKeySchemaName(static_cast<std::uint32_t>(row.key)),
                  i == 0 ? "" : values.value(i)->name());
    }
}

class Translation : public KeyFixture {};

TEST_F(Translation, GivesTheFixedKeyOfEachProductKeyAndNoneForTheOthers)
{
    constexpr std::pair<std::uint32_t, unsigned> kFixed[] = {
        {24, 5},    {25, 4},    {32, 39},   {36, 1},    {44, 1},   {48, 36},  {60, 22},
        {64, 18},   {65, 9},    {66, 10},   {67, 11},   {68, 12},  {69, 13},  {70, 14},
        {71, 15},   {72, 16},   {73, 17},   {85, 24},   {86, 26},  {92, 120}, {96, 41},
        {104, 44},  {105, 43},  {112, 73},  {113, 74},  {114, 75}, {115, 76}, {116, 81},
        {138, 141}, {139, 142}, {142, 164}, {143, 166}, {154, 51}, {156, 29}, {162, 105},
        {163, 134}, {164, 161}, {167, 165}, {176, 135}, {192, 38}, {197, 77}, {198, 78},
        {199, 79},  {200, 80},  {208, 35},  {248, 37}};
    const std::map<std::uint32_t, unsigned> fixed(std::begin(kFixed), std::end(kFixed));
    Start();
    for (std::uint32_t key = 0; key < 256; ++key) {
        const auto row = fixed.find(key);
        EXPECT_EQ(keys->TranslateOrluToUEI(key, ""), row == fixed.end() ? 255 : row->second) << key;
    }
}

TEST_F(Translation, ReadsTheCodesetsKeys)
{
    Start();
    struct Row {
        std::uint32_t key;
        const char* codeset;
        unsigned ueiKey;
    };
    Learn("C0123", "\x19\x15");
    constexpr Row kRows[] = {
        {85, "C0123", 24},          {26, "C0123", 25}, {26, "C0001", 26},
        {20, "C0123", 21},          {20, "C0001", 25}, {140, "C0123", 1},
        {26, "c0123", 255},         {292, "C0123", 1},  // 256 and 36
        {282, "C0123", 255},                            // 256 and 26
        {0xFFFFFFFF, "C0123", 255},
    };
    for (const Row& row : kRows) {
        TakeLog();
        EXPECT_EQ(keys->TranslateOrluToUEI(row.key, row.codeset), row.ueiKey) << row.key;
        EXPECT_EQ(TakeLog(), fmt::format("3 TranslateOrluToUEI: Orlu Key {} translated to UEI key "
                                         "{}\n",
                                         row.key, row.ueiKey));
    }
}

}  // namespace
