// SPDX-License-Identifier: Apache-2.0

#include "ProtoBufs/KeyValues.h"

#include <set>

#include <gtest/gtest.h>

namespace {

using IpcProtocol::KEY_VALUE;

TEST(KeyValues, EveryNumberHasANameOfItsOwnThatLeadsBack)
{
    std::set<std::string> names;
    for (int number = 0; number <= 255; ++number) {
        const auto key = static_cast<KEY_VALUE>(number);
        EXPECT_EQ(IpcProtocol::KeyValueFromName(IpcProtocol::KeyValueName(key)), key);
        names.insert(IpcProtocol::KeyValueName(key));
    }
    EXPECT_EQ(names.size(), 256U);
    EXPECT_EQ(IpcProtocol::KeyValueName(static_cast<KEY_VALUE>(0)), "KEY_VAL_AVAIL_00");
    EXPECT_EQ(IpcProtocol::KeyValueName(static_cast<KEY_VALUE>(4)), "KEY_VAL_AVAIL_01");
    EXPECT_EQ(IpcProtocol::KeyValueName(static_cast<KEY_VALUE>(254)), "KEY_VAL_AVAIL_191");
}

TEST(KeyValues, CaseAndPrefixAreFree)
{
    const std::pair<const char*, std::optional<KEY_VALUE>> rows[] = {
        {"ORLU_TV_POWER", IpcProtocol::ORLU_TV_POWER},
        {"tv_power", IpcProtocol::ORLU_TV_POWER},
        {"hdmi_1", IpcProtocol::HDMI_1},
        {"", std::nullopt},
        {"ORLU_", std::nullopt},
        {"36", std::nullopt},
    };
    for (const auto& [name, key] : rows) {
        EXPECT_EQ(IpcProtocol::KeyValueFromName(name), key) << name;
    }
}

}  // namespace
