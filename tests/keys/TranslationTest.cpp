// SPDX-License-Identifier: Apache-2.0

#include "KeyHouse.h"

#include <map>
#include <sstream>

#include "keys/KeyResolution.h"
#include "keys/KeyTables.h"

using namespace TrellanService;

namespace {

struct CellRow {
    std::uint32_t orluKey;
    const char* cells[7];
};

// "b17>21 25": with bit 17 the key 21, else 25; columns as in kColumns.
constexpr const char* kColumns[7] = {"ADMR", "CS", "H", "N", "T", "V", "Y"};
constexpr CellRow kCells[] = {
    {20, {"255", "b17>21 25", "255", "b17>21 b5>37", "b17>21 b5>37", "255", "25"}},
    {26,
     {"b26>25 26", "b26>25 26", "b26>25 26", "b26>25 26", "b26>25 26", "b26>25 26", "b26>25 26"}},
    {87,
     {"b23>27 b14>31", "b23>27 b13>100 b14>31", "255", "b23>27 b14>31", "b23>27 b13>100 b14>31",
      "b23>27 b13>100 b14>31", "b23>27 b13>100 b14>31"}},
    {88,
     {"b22>28 b8>30", "b22>28 b7>99 b8>30", "255", "b22>28 b8>30", "b22>28 b7>99 b8>30",
      "b22>28 b7>99 b8>30", "b22>28 b7>99 b8>30"}},
    {89,
     {"255", "b13>100 b14>31", "255", "b13>100 b14>31", "b13>100 b14>31", "255", "b14>31 b13>100"}},
    {90, {"255", "b7>99 b8>30", "255", "b7>99 b8>30", "b7>99 b8>30", "255", "b8>30 b7>99"}},
    {100, {"46", "46", "255", "46", "46", "255", "46"}},
    {140, {"b24>2 1", "b24>2 1", "b24>2 1", "b24>2 1", "b24>2 1", "b24>2 1", "b24>2 1"}},
    {144, {"33", "b12>33 b11>123", "33", "33", "b12>33 b11>123", "33", "b18>97 b12>33"}},
    {160, {"40", "b4>40 b5>37", "40", "b4>40 b5>37", "b4>40 b5>37", "40", "40"}},
    {182, {"255", "b2>96 b3>105 b6>72", "255", "255", "72", "255", "98"}},
    {193,
     {"255", "b9>121 b15>87 b16>86", "255", "b9>121 b10>98 b15>87 b16>86", "b16>86 b9>121 b15>87",
      "255", "b9>121 b15>87 b16>86"}},
    {204, {"b25>3 1", "b25>3 1", "b25>3 1", "b25>3 1", "b25>3 1", "b25>3 1", "b25>3 1"}},
    {224,
     {"b1>42 b0>19", "b1>42 b0>19", "b1>42 b0>19", "b1>42 b0>19", "b1>42 b0>19", "b1>42 b0>19",
      "b1>42 b0>19"}},
};

unsigned ReadCell(const std::string& cell, std::uint32_t bits)
{
    std::istringstream words(cell);
    for (std::string word; words >> word;) {
        const auto arrow = word.find('>');
        if (arrow == std::string::npos) {
            return static_cast<unsigned>(std::stoi(word));
        }
        if ((bits >> std::stoi(word.substr(1)) & 1U) != 0) {
            return static_cast<unsigned>(std::stoi(word.substr(arrow + 1)));
        }
    }
    return 255;
}

std::vector<int> TestedBits(const std::string& cell)
{
    std::vector<int> bits;
    std::istringstream words(cell);
    for (std::string word; words >> word;) {
        if (word[0] == 'b') {
            bits.push_back(std::stoi(word.substr(1)));
        }
    }
    return bits;
}

// Every mixture of the bits that the cell asks for, the rest all clear and all set.
void ExpectCell(std::uint32_t orluKey, const std::string& codeset, const std::string& cell)
{
    const auto tested = TestedBits(cell);
    for (unsigned mixture = 0; mixture < 1U << tested.size(); ++mixture) {
        std::uint32_t set = 0;
        std::uint32_t clear = 0;
        for (std::size_t i = 0; i < tested.size(); ++i) {
            ((mixture >> i & 1U) != 0 ? set : clear) |= 1U << tested[i];
        }
        EXPECT_EQ(ResolveKey(orluKey, codeset, set), ReadCell(cell, set));
        EXPECT_EQ(ResolveKey(orluKey, codeset, ~clear), ReadCell(cell, ~clear));
    }
}

TEST(Resolution, FollowsClassAndHeldKeys)
{
    for (const CellRow& row : kCells) {
        for (std::size_t column = 0; column < std::size(kColumns); ++column) {
            for (const char letter : std::string(kColumns[column])) {
                SCOPED_TRACE(testing::Message() << row.orluKey << " " << letter);
                ExpectCell(row.orluKey, std::string(1, letter) + "0001", row.cells[column]);
            }
        }
        for (const char* codeset : {"", "t2051", "B0001", "X0001"}) {
            EXPECT_EQ(ResolveKey(row.orluKey, codeset, ~0U), 255) << codeset;
        }
    }
}

TEST(Resolution, HasOneCodesetWhoseHomeKeyIsKnown)
{
    EXPECT_EQ(ResolveKey(193, "T2051", 0), 121);
    EXPECT_EQ(ResolveKey(193, "T2051", 0x10000), 121);
    EXPECT_EQ(ResolveKey(193, "T20510", 0), 255);
    EXPECT_EQ(ResolveKey(144, "T2051", 0), 255);
}

TEST(FixedKeys, AreTheSameForEveryCodeset)
{
    const std::map<unsigned, unsigned> fixed = {
        {24, 5},    {25, 4},    {32, 39},   {36, 1},    {44, 1},   {48, 36},  {60, 22},
        {64, 18},   {65, 9},    {66, 10},   {67, 11},   {68, 12},  {69, 13},  {70, 14},
        {71, 15},   {72, 16},   {73, 17},   {85, 24},   {86, 26},  {92, 120}, {96, 41},
        {104, 44},  {105, 43},  {112, 73},  {113, 74},  {114, 75}, {115, 76}, {116, 81},
        {138, 141}, {139, 142}, {142, 164}, {143, 166}, {154, 51}, {156, 29}, {162, 105},
        {163, 134}, {164, 161}, {167, 165}, {176, 135}, {192, 38}, {197, 77}, {198, 78},
        {199, 79},  {200, 80},  {208, 35},  {248, 37}};
    for (unsigned key = 0; key < 256; ++key) {
        const auto row = fixed.find(key);
        EXPECT_EQ(FixedUEIKey(static_cast<std::uint8_t>(key)),
                  row == fixed.end() ? 255U : row->second)
            << key;
    }
    EXPECT_EQ(orluToUEIKeyMap.size(), fixed.size() + std::size(kCells));
}

TEST(UEIKeyNames, FollowTheSchemaButForOne)
{
    const auto& values = *UEIKeyNamesPB::ueikey_descriptor();
    ASSERT_EQ(values.value_count(), 245);
    EXPECT_EQ(UEIKeySchemaName(0), "");
    EXPECT_EQ(UEIKeySchemaName(245), "");
    for (int i = 0; i < values.value_count(); ++i) {
        std::string expected = "O_" + values.value(i)->name().substr(1);
        std::ranges::transform(expected, expected.begin(),
                               [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
        const auto& row = UEIKeyNameTable[static_cast<std::size_t>(i)];
        EXPECT_EQ(row.key, values.value(i)->number());
        EXPECT_EQ(row.key, i == 0 ? -1 : i);
        EXPECT_EQ(UEIKeySchemaName(static_cast<std::uint32_t>(row.key)),
                  i == 0 ? "" : values.value(i)->name());
        EXPECT_EQ(row.name, i == 20 ? "O_KEY__0" : expected);
    }
}

class Translation : public KeyHouse {};

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
        {26, "C0123", 25},          {26, "C0001", 26}, {20, "C0123", 21}, {20, "C0001", 25},
        {140, "C0123", 1},          {36, "C0123", 1},  {36, "", 1},       {36, "c0123", 1},
        {26, "c0123", 255},         {3, "C0123", 255}, {292, "C0123", 1},  // 256 and 36
        {282, "C0123", 255},                                               // 256 and 26
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
