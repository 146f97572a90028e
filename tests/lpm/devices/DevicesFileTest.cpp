// SPDX-License-Identifier: Apache-2.0

#include <gtest/gtest.h>

#include "devices/DevicesFile.h"

namespace Lpm::Devices {
namespace {

constexpr std::string_view kGood =
    R"({"devices":[{"name":"tv","type":"television","protocol":"nec",)"
    R"("codes":{"0x0408":"power"},"cec":{"0x40":"power"}}]})";

/// The valid text with one piece replaced.
std::string With(std::string_view piece, const std::string& other)
{
    std::string text(kGood);
    return text.replace(text.find(piece), piece.size(), other);
}

std::string WhyNot(const std::string& text)
{
    std::string why;
    return ParseDevicesFile(text, why) ? "accepted" : why;
}

TEST(DevicesFile, SaysWhatIsWrong)
{
    const std::string codes = R"({"0x0408":"power"})";
    const std::string two = std::string(kGood.substr(0, kGood.size() - 2)) + "," +
                            std::string(kGood.substr(kGood.find('[') + 1));
    std::string many = "{\"0x1\":\"power\"";
    for (unsigned i = 0; i < kMaxCodes; ++i) {
        many += ",\"" + ScancodeText(Protocol::kNec, i) + "\":\"power\"";
    }
    const std::pair<std::string, std::string_view> rows[] = {
        {std::string(kGood), "accepted"},
        {R"({"devices":[]})", "accepted"},
        {"{}", R"("devices" is no list of at most 16 devices)"},
        {With(R"("name")", R"("title")"), R"(device 1: member "title" is unknown)"},
        {With(R"("tv")", R"("Our TV")"), R"(device 1: "name" is unknown)"},
        {With("tv", std::string(kMaxName + 1, 'a')), R"(device 1: "name" is unknown)"},
        {With(R"("nec")", R"("laser")"), R"(device 1: "protocol" is unknown)"},
        {With(codes, many + "}"), R"(device 1: "codes" is no object of at most 512 codes)"},
        {With("0x0408", "0x10408"), R"(device 1: "0x10408" in "codes" is no code such as 0xffff)"},
        {With("0x40\"", "0x140\""), R"(device 1: "0x140" in "cec" is no code such as 0xff)"},
        {With(R"(8":"power")", R"(8":"eject")"),
         R"(device 1: "0x0408" in "codes" stands for nothing that the device can do)"},
        {With(codes, R"({"0x0408":"power","0x408":"mute"})"),
         R"(device 1: "0x408" in "codes" stands there twice)"},
        {two, R"(device 2: the name "tv" is taken)"},
    };
    for (const auto& [text, reason] : rows) {
        EXPECT_EQ(WhyNot(text), reason) << text;
    }
}

TEST(DevicesFile, RefusesEachPartOfAFileAndSurvivesEachDamagedByte)
{
    for (std::size_t i = 0; i < kGood.size(); ++i) {
        EXPECT_NE(WhyNot(std::string(kGood.substr(0, i))), "accepted") << i;
        for (unsigned byte = 0; byte < 256; ++byte) {
            std::string text(kGood);
            text[i] = static_cast<char>(byte);
            EXPECT_NE(WhyNot(text), "") << text;
        }
    }
    EXPECT_NE(WhyNot(std::string(100000, '[')), "accepted");
    EXPECT_NE(WhyNot(std::string(kGood) + std::string(1 << 20, ' ')), "accepted");
}

}  // namespace
}  // namespace Lpm::Devices
