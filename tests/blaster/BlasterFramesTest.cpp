// SPDX-License-Identifier: Apache-2.0

#include "blaster/BlasterFrames.h"

#include <gmock/gmock.h>

#include "support/ScriptedLpm.h"

namespace TrellanService::Tests {

using ::testing::ElementsAreArray;

TEST(BlasterFrames, HoldTheirLengthHighByteFirst)
{
    EXPECT_EQ(Hex(BlasterFrames::Store(0x1234, {})), "0003221234");

    const std::vector<std::uint8_t> most(BlasterFrames::kMaxStoreBytes, 0xA5);
    const std::string frame = BlasterFrames::Store(0x1234, most);
    EXPECT_EQ(frame.size(), 1204U);
    EXPECT_EQ(Hex(frame.substr(0, 6)), "04b2221234a5");
}

TEST(BlasterFrames, RepliesShorterThanTheirCountGiveWhatIsThere)
{
    struct Row {
        const char* reply;
        std::uint8_t status;
        std::vector<std::uint8_t> keys;
        std::vector<std::uint16_t> devices;
    };
    const std::vector<Row> rows = {
        {"", 0xFF, {}, {}},
        {"03", 0xFF, {}, {}},
        {"0100", 0x00, {}, {}},
        {"0207", 0x07, {}, {}},
        {"020700", 0x07, {0}, {}},
        {"03000405", 0x00, {4, 5}, {}},
        {"0300040506", 0x00, {4, 5}, {0x0506}},
        {"ff0004", 0x00, {4}, {}},
        {"00000405", 0x00, {}, {}},
        {"06000212340009", 0x00, {0x02, 0x12, 0x34, 0x00, 0x09}, {0x1234, 0x0009}},
        {"060002123400", 0x00, {0x02, 0x12, 0x34, 0x00}, {0x1234}},
        {"02000012", 0x00, {0}, {}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.reply);
        const std::string reply = Unhex(row.reply);
        EXPECT_EQ(BlasterFrames::Status(reply), row.status);
        EXPECT_THAT(BlasterFrames::KeysOf(reply), ElementsAreArray(row.keys));
        EXPECT_THAT(BlasterFrames::DevicesOf(reply), ElementsAreArray(row.devices));
    }
}

}  // namespace TrellanService::Tests
