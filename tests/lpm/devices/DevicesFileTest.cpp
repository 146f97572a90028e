// SPDX-License-Identifier: Apache-2.0

#include <gtest/gtest.h>

#include "devices/DevicesFile.h"

namespace Lpm::Devices {
namespace {

constexpr std::string_view kGood =
    R"({"devices":[{"name":"tv","type":"television","protocol":"nec",)"
    R"("codes":{"0x0408":"power"},"cec":{"0x40":"power"}}]})";

/// The good text with one piece of it replaced.
std::string With(std::string_view piece, const std::string& other)
{
    std::string text(kGood);
    return text.replace(text.find(piece), piece.size(), other);
}

std::string WhyNot(const std::string& text)
{
    std::string why;
    EXPECT_FALSE(ParseDevicesFile(text, why)) << text;
    return why;
}

TEST(DevicesFile, HoldsDevices)
{
    std::string why;
    const auto devices = ParseDevicesFile(std::string(kGood), why);
    ASSERT_TRUE(devices) << why;
    ASSERT_EQ(devices->size(), 1U);
    const DeviceDescription& tv = devices->front();
    EXPECT_EQ(tv.name, "tv");
    EXPECT_EQ(tv.protocol, Protocol::kNec);
    EXPECT_EQ(tv.codes.at(0x0408)->name, "power");
    EXPECT_EQ(tv.cec.at(0x40)->name, "power");
    EXPECT_TRUE(ParseDevicesFile(With(R"(,"cec":{"0x40":"power"})", ""), why)) << why;
    EXPECT_TRUE(ParseDevicesFile(R"({"devices":[]})", why)) << why;
}

TEST(DevicesFile, SaysWhatIsWrong)
{
    const std::string codes = R"({"0x0408":"power"})";
    const struct {
        std::string text;
        std::string_view why;
    } rows[] = {
        {"[]", "the text is no JSON object"},
        {"{}", R"("devices" is no list of at most 16 devices)"},
        {R"({"devices":[],"rooms":1})", R"(member "rooms" is unknown)"},
        {R"({"devices":[1]})", "device 1: it is no object"},
        {With(R"("name")", R"("title")"), R"(device 1: member "title" is unknown)"},
        {With(R"("tv")", "1"), R"(device 1: "name" is no text)"},
        {With(R"("tv")", R"("Our TV")"), R"(device 1: "name" is unknown)"},
        {With(R"("television")", R"("toaster")"), R"(device 1: "type" is unknown)"},
        {With(R"("nec")", R"("laser")"), R"(device 1: "protocol" is unknown)"},
        {With(codes, "[]"), R"(device 1: "codes" is no object of at most 512 codes)"},
        {With("0x0408", "1032"), R"(device 1: "1032" in "codes" is no code such as 0xffff)"},
        {With("0x0408", "0x"), R"(device 1: "0x" in "codes" is no code such as 0xffff)"},
        {With("0x0408", "0x10408"), R"(device 1: "0x10408" in "codes" is no code such as 0xffff)"},
        {With("0x0408", "0x999999999"),
         R"(device 1: "0x999999999" in "codes" is no code such as 0xffff)"},
        {With("0x40\"", "0x140\""), R"(device 1: "0x140" in "cec" is no code such as 0xff)"},
        {With(R"(8":"power")", R"(8":"explode")"),
         R"(device 1: "0x0408" in "codes" stands for nothing that the device can do)"},
        {With(R"(8":"power")", R"(8":"eject")"),
         R"(device 1: "0x0408" in "codes" stands for nothing that the device can do)"},
        {With(R"(8":"power")", R"(8":null)"),
         R"(device 1: "0x0408" in "codes" stands for nothing that the device can do)"},
        {With(codes, R"({"0x0408":"power","0x408":"mute"})"),
         R"(device 1: "0x408" in "codes" stands there twice)"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(WhyNot(row.text), row.why) << row.text;
    }
    const std::string two = std::string(kGood.substr(0, kGood.size() - 2)) + "," +
                            std::string(kGood.substr(kGood.find('[') + 1));
    EXPECT_EQ(WhyNot(two), R"(device 2: the name "tv" is taken)");
}

TEST(DevicesFile, RefusesWhatIsTooMuch)
{
    std::string many;
    for (unsigned i = 0; i <= kMaxCodes; ++i) {
        many += (i > 0 ? "," : "") + ("\"" + ScancodeText(Protocol::kNec, i)) + "\":\"power\"";
    }
    EXPECT_NE(WhyNot(With(R"("0x0408":"power")", many)), "");
    EXPECT_NE(WhyNot(With(R"("tv")", "\"" + std::string(kMaxName + 1, 'a') + "\"")), "");
    EXPECT_NE(WhyNot(std::string(100000, '[')), "");
    EXPECT_NE(WhyNot(std::string(kGood) + std::string(1 << 20, ' ')), "");
    EXPECT_NE(WhyNot(With(R"("type")", R"("name":"tv","type")")), "") << "a member twice";
}

TEST(DevicesFile, RefusesEachPartOfAFile)
{
    for (std::size_t size = 0; size < kGood.size(); ++size) {
        EXPECT_NE(WhyNot(std::string(kGood.substr(0, size))), "") << size;
    }
}

TEST(DevicesFile, SurvivesEachDamagedByte)
{
    for (std::size_t i = 0; i < kGood.size(); ++i) {
        for (unsigned byte = 0; byte < 256; ++byte) {
            std::string text(kGood);
            text[i] = static_cast<char>(byte);
            std::string why;
            EXPECT_TRUE(ParseDevicesFile(text, why) || !why.empty()) << text;
        }
    }
}

}  // namespace
}  // namespace Lpm::Devices
