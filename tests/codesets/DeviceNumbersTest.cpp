// SPDX-License-Identifier: Apache-2.0

#include "CodesetFixture.h"
#include "codesets/AmbiguousKeyMap.h"

using TrellanService::ReadBlasterKeyMap;
using TrellanService::Trellan_ServiceCodesetHandler;

namespace {

class DeviceNumbers : public CodesetFixture {};

TEST_F(DeviceNumbers, FollowClassAndNumber)
{
    struct Row {
        const char* name;
        std::uint16_t number;
    };
    constexpr Row kRows[] = {
        {"T2051", 0x0803},
        {"C0123", 0x107B},
        {"H0012", 0xA00C},
        {"T5000", 0xB388},
        {"Y5000", 0x5388},
        {"V5000", 0x5388},
        {"N0001", 0x2001},
        {"S0456", 0x31C8},
        {"V0001", 0x4001},
        {"Y0001", 0x6001},
        {"R4095", 0x7FFF},
        {"M0000", 0x7000},
        {"A0001", 0x8001},
        {"D0001", 0x9001},
        {"C4096", 0xC000},
        {"N4096", 0xD000},
        {"S4096", 0xE000},
        {"R4097", 0xF001},
        {"M4097", 0xF001},
        {"A8191", 0xFFFF},
        {"D4097", 0xF001},
        {"T65537", 0x0001},
        {"T18446744073709551617", 0x0001},
        {"T7", 0x0007},
    };
    for (const Row& row : kRows) {
        SCOPED_TRACE(row.name);
        std::uint16_t number = 0;
        EXPECT_TRUE(Trellan_ServiceCodesetHandler::devStringTodevNum(row.name, number));
        EXPECT_EQ(number, row.number);
        EXPECT_EQ(TakeLog(),
                  fmt::format("3 TRS: Converted {} to 0x{:04x}\n", row.name, row.number));
    }
}

TEST_F(DeviceNumbers, RefuseWhatIsNoName)
{
    std::uint16_t number = 0;
    for (const char* name :
         {"", "t2051", "T", "T20x1", "T-1", "T+1", "T 1", "T2051 ", "2051", "[1", "@1",
          "\xC3\xA4"
          "1"}) {
        SCOPED_TRACE(name);
        EXPECT_FALSE(Trellan_ServiceCodesetHandler::devStringTodevNum(name, number));
        EXPECT_EQ(TakeLog(), std::string("3 TRS: Invalid codeset string ") + name + "\n");
    }
    for (const auto& name : {std::string("T1\0", 3), std::string("T\xFF")}) {
        EXPECT_FALSE(Trellan_ServiceCodesetHandler::devStringTodevNum(name, number));
    }
    TakeLog();
    for (const char* name : {"H4096", "X0001", "B5000"}) {
        EXPECT_FALSE(Trellan_ServiceCodesetHandler::devStringTodevNum(name, number));
        EXPECT_EQ(TakeLog(),
                  fmt::format("3 TRS: Invalid codeset string {}passed in from KESTRA\n", name));
    }
}

TEST(BlasterKeyMap, HasABitForEachKeyThatMayStandForAProductKey)
{
    constexpr int kKeyOfBit[] = {19, 42, 96, 105, 40, 37, 72,  99, 30, 121, 98, 123, 33, 100,
                                 31, 87, 86, 21,  97, 32, 118, 68, 28, 27,  2,  3,   25};
    for (int key = 0; key < 256; ++key) {
        const auto* const bit = std::ranges::find(kKeyOfBit, key);
        const std::string answer{2, 0, static_cast<char>(key)};
        EXPECT_EQ(ReadBlasterKeyMap(answer).ambiguousKeyBitMap,
                  bit == std::end(kKeyOfBit) ? 0U : 1U << (bit - kKeyOfBit))
            << key;
    }
}

TEST(BlasterKeyMap, IsReadToItsCountOrItsEnd)
{
    struct Row {
        std::string answer;
        std::uint32_t bits;
        std::vector<std::uint8_t> keys;
    };
    const Row rows[] = {
        {{"\x03\x00\x1b\x02", 4}, 0x1800000, {27, 2}},
        {{"\x02\x00\x08", 3}, 0, {8}},
        {{"\x01\x00", 2}, 0, {}},
        {{"\x01\x00\x1b", 3}, 0, {}},
        {{"\x00\x00\x1b", 3}, 0, {}},
        {{"\x02\x00\x1b\x02", 4}, 0x800000, {27}},
        {{"\x05\x00\x19", 3}, 0x4000000, {25}},
        {{"\xff\x00\xff\x13", 4}, 0x1, {255, 19}},
        {{"\x05\x00", 2}, 0, {}},
        {"\x05", 0, {}},
        {"", 0, {}},
    };
    for (const Row& row : rows) {
        const auto map = ReadBlasterKeyMap(row.answer);
        EXPECT_EQ(map.ambiguousKeyBitMap, row.bits);
        EXPECT_EQ(map.ueiKeys, row.keys);
    }
}

TEST_F(DeviceNumbers, KeyMapFillsTheEntryAtThePosition)
{
    handler->cacheCodesets(List({"T2051"}));
    handler->CalculateAmbiguousKeyMap({"\x03\x00\x1b\x02", 4});
    EXPECT_EQ(Map(), "T2051 803 0  unsafe ;");
    handler->Rewind();
    TakeLog();
    handler->CalculateAmbiguousKeyMap({"\x03\x00\x1b\x02", 4});
    EXPECT_EQ(TakeLog(), "3 Ambiguous key bit map for codeset T2051 is 0x01800000\n");
    EXPECT_EQ(Map(), "T2051 803 1800000  unsafe 1b02;");
    handler->CalculateAmbiguousKeyMap({"\x02\x00\x08", 3});
    EXPECT_EQ(Map(), "T2051 803 0  unsafe 08;");
}

}  // namespace
