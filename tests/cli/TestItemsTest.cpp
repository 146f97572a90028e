// SPDX-License-Identifier: Apache-2.0

#include "cli/TestItems.h"

#include <cstdlib>
#include <fstream>
#include <numeric>
#include <span>

#include <gtest/gtest.h>

#include "infrared/CodesetBinary.h"

namespace TrellanService {
namespace {

TEST(TestItems, HoldACodesetThatTheBlasterTakes)
{
    std::string why;
    const auto codeset = Lpm::CodesetBinary::Parse(kTestCodeset, why);
    ASSERT_TRUE(codeset) << why;
    EXPECT_EQ(codeset->Keys().size(), 57U);
}

TEST(TestItems, HoldAnEdidThatAnotherReaderAccepts)
{
    for (const auto block : {0U, 1U}) {
        const auto bytes = std::span(kTestEdid).subspan(block * 128, 128);
        EXPECT_EQ(std::accumulate(bytes.begin(), bytes.end(), 0U) % 256, 0U) << block;
    }
    std::ofstream(EDID_FILE, std::ios::binary)
        .write(reinterpret_cast<const char*>(kTestEdid.data()), kTestEdid.size());
    EXPECT_EQ(std::system("edid-decode --check " EDID_FILE " | grep -q \"'SAMSUNG'\""), 0);
    EXPECT_EQ(std::system("edid-decode --check " EDID_FILE " >/dev/null"), 0);
}

}  // namespace
}  // namespace TrellanService
