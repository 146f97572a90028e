// SPDX-License-Identifier: Apache-2.0

#include "KeyFixture.h"

#include <algorithm>

#include "keys/KeyResolution.h"
#include "keys/KeyTables.h"

using namespace TrellanService;

namespace {

struct ClassRow {
    std::uint32_t orluKey;
    unsigned allHeld[7];  // by column
    unsigned noneHeld[7];
};

constexpr const char* kColumns[7] = {"ADMR", "CS", "H", "N", "T", "V", "Y"};
constexpr ClassRow kByClass[] = {
    {20, {255, 21, 255, 21, 21, 255, 25}, {255, 25, 255, 255, 255, 255, 25}},
    {26, {25, 25, 25, 25, 25, 25, 25}, {26, 26, 26, 26, 26, 26, 26}},
    {87, {27, 27, 255, 27, 27, 27, 27}, {255, 255, 255, 255, 255, 255, 255}},
    {88, {28, 28, 255, 28, 28, 28, 28}, {255, 255, 255, 255, 255, 255, 255}},
    {89, {255, 100, 255, 100, 100, 255, 31}, {255, 255, 255, 255, 255, 255, 255}},
    {90, {255, 99, 255, 99, 99, 255, 30}, {255, 255, 255, 255, 255, 255, 255}},
    {100, {46, 46, 255, 46, 46, 255, 46}, {46, 46, 255, 46, 46, 255, 46}},
    {140, {2, 2, 2, 2, 2, 2, 2}, {1, 1, 1, 1, 1, 1, 1}},
    {144, {33, 33, 33, 33, 33, 33, 97}, {33, 255, 33, 33, 255, 33, 255}},
    {160, {40, 40, 40, 40, 40, 40, 40}, {40, 255, 40, 255, 255, 40, 40}},
    {182, {255, 96, 255, 255, 72, 255, 98}, {255, 255, 255, 255, 72, 255, 98}},
    {193, {255, 121, 255, 121, 86, 255, 121}, {255, 255, 255, 255, 255, 255, 255}},
    {204, {3, 3, 3, 3, 3, 3, 3}, {1, 1, 1, 1, 1, 1, 1}},
    {224, {42, 42, 42, 42, 42, 42, 42}, {255, 255, 255, 255, 255, 255, 255}},
};

TEST(Resolution, FollowsClassAndHeldKeys)
{
    for (const ClassRow& row : kByClass) {
        for (std::size_t column = 0; column < std::size(kColumns); ++column) {
            for (const char letter : std::string(kColumns[column])) {
                SCOPED_TRACE(testing::Message() << row.orluKey << " " << letter);
                const std::string codeset = std::string(1, letter) + "0001";
                EXPECT_EQ(ResolveKey(row.orluKey, codeset, ~0U), row.allHeld[column]);
                EXPECT_EQ(ResolveKey(row.orluKey, codeset, 0), row.noneHeld[column]);
            }
        }
        for (const char* codeset : {"", "t2051", "B0001", "X0001"}) {
            EXPECT_EQ(ResolveKey(row.orluKey, codeset, ~0U), 255) << codeset;
        }
    }
    // If the code set lacks the first candidate, the next one is used.
    constexpr struct {
        std::uint32_t key;
        const char* codeset;
        std::uint32_t bits;
        unsigned ueiKey;
    } kRows[] = {
        {20, "N0001", 0x20, 37},     {87, "A0001", 0x4000, 31},    {87, "C0001", 0x6000, 100},
        {87, "C0001", 0x4000, 31},   {88, "A0001", 0x100, 30},     {88, "C0001", 0x180, 99},
        {88, "C0001", 0x100, 30},    {89, "C0001", 0x4000, 31},    {89, "Y0001", 0x2000, 100},
        {90, "C0001", 0x100, 30},    {90, "Y0001", 0x80, 99},      {144, "C0001", 0x800, 123},
        {144, "Y0001", 0x1000, 33},  {160, "C0001", 0x20, 37},     {182, "C0001", 0x48, 105},
        {182, "C0001", 0x40, 72},    {193, "C0001", 0x18000, 87},  {193, "C0001", 0x10000, 86},
        {193, "N0001", 0x18400, 98}, {193, "N0001", 0x18000, 87},  {193, "N0001", 0x10000, 86},
        {193, "T0001", 0x8200, 121}, {193, "T0001", 0x8000, 87},   {224, "A0001", 0x1, 19},
        {193, "T2051", 0, 121},      {193, "T2051", 0x10000, 121}, {193, "T20510", 0, 255},
        {144, "T2051", 0, 255}};
    for (const auto& row : kRows) {
        EXPECT_EQ(ResolveKey(row.key, row.codeset, row.bits), row.ueiKey)
            << row.key << row.codeset << row.bits;
    }
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
        {85, "C0123", 24},          {163, "C0123", 134}, {248, "C0123", 37}, {24, "C0123", 5},
        {26, "C0123", 25},          {26, "C0001", 26},   {20, "C0123", 21},  {20, "C0001", 25},
        {140, "C0123", 1},          {36, "C0123", 1},    {36, "", 1},        {36, "c0123", 1},
        {26, "c0123", 255},         {3, "C0123", 255},   {292, "C0123", 1},  // 256 and 36
        {282, "C0123", 255},                                                 // 256 and 26
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
