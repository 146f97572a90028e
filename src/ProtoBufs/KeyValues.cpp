// SPDX-License-Identifier: Apache-2.0

#include "ProtoBufs/KeyValues.h"

#include <algorithm>
#include <functional>
#include <iterator>

namespace IpcProtocol {
namespace {

struct Row {
    KEY_VALUE key;
    std::string_view name;
};

// In ascending order of the keys.
constexpr Row kNames[] = {
    {ORLU_MUTE, "ORLU_MUTE"},
    {ORLU_VOLUME_DOWN, "ORLU_VOLUME_DOWN"},
    {ORLU_VOLUME_UP, "ORLU_VOLUME_UP"},
    {ORLU_LAST_CHANNEL, "ORLU_LAST_CHANNEL"},
    {ORLU_CHANNEL_PRESET_DOWN, "ORLU_CHANNEL_PRESET_DOWN"},
    {ORLU_CHANNEL_PRESET_UP, "ORLU_CHANNEL_PRESET_UP"},
    {ORLU_STOP, "ORLU_STOP"},
    {ORLU_DOWN_ARROW, "ORLU_DOWN_ARROW"},
    {ORLU_TV_POWER, "ORLU_TV_POWER"},
    {ORLU_SOURCE_POWER, "ORLU_SOURCE_POWER"},
    {ORLU_EXIT, "ORLU_EXIT"},
    {ORLU_TV_INPUT, "ORLU_TV_INPUT"},
    {ORLU_NUMBER_0, "ORLU_NUMBER_0"},
    {ORLU_NUMBER_1, "ORLU_NUMBER_1"},
    {ORLU_NUMBER_2, "ORLU_NUMBER_2"},
    {ORLU_NUMBER_3, "ORLU_NUMBER_3"},
    {ORLU_NUMBER_4, "ORLU_NUMBER_4"},
    {ORLU_NUMBER_5, "ORLU_NUMBER_5"},
    {ORLU_NUMBER_6, "ORLU_NUMBER_6"},
    {ORLU_NUMBER_7, "ORLU_NUMBER_7"},
    {ORLU_NUMBER_8, "ORLU_NUMBER_8"},
    {ORLU_NUMBER_9, "ORLU_NUMBER_9"},
    {ORLU_PLAY, "ORLU_PLAY"},
    {ORLU_PAUSE, "ORLU_PAUSE"},
    {ORLU_FAST_REVERSE, "ORLU_FAST_REVERSE"},
    {ORLU_FAST_FORWARD, "ORLU_FAST_FORWARD"},
    {ORLU_QUICK_REPLAY, "ORLU_QUICK_REPLAY"},
    {ORLU_QUICK_SKIP, "ORLU_QUICK_SKIP"},
    {ORLU_DASH, "ORLU_DASH"},
    {ORLU_RIGHT_ARROW, "ORLU_RIGHT_ARROW"},
    {ORLU_INFO, "ORLU_INFO"},
    {ORLU_PAGE_DOWN, "ORLU_PAGE_DOWN"},
    {ORLU_PAGE_UP, "ORLU_PAGE_UP"},
    {HDMI_1, "HDMI_1"},
    {HDMI_2, "HDMI_2"},
    {HDMI_3, "HDMI_3"},
    {HDMI_4, "HDMI_4"},
    {HDMI_5, "HDMI_5"},
    {ORLU_MORE_SOFTKEY_PANDORA, "ORLU_MORE_SOFTKEY_PANDORA"},
    {ORLU_MORE_SOFTKEY_YOUTUBE, "ORLU_MORE_SOFTKEY_YOUTUBE"},
    {ORLU_ASSERT_ON, "ORLU_ASSERT_ON"},
    {ORLU_MORE_SOFTKEY_YAHOO, "ORLU_MORE_SOFTKEY_YAHOO"},
    {ORLU_MORE_SOFTKEY_SPOTIFY, "ORLU_MORE_SOFTKEY_SPOTIFY"},
    {ORLU_DVD_MENU, "ORLU_DVD_MENU"},
    {ORLU_MORE_SOFTKEY_DELIMITER, "ORLU_MORE_SOFTKEY_DELIMITER"},
    {ORLU_RECORD, "ORLU_RECORD"},
    {ORLU_LEFT_ARROW, "ORLU_LEFT_ARROW"},
    {ORLU_MORE_SOFTKEY_RECORDINGS, "ORLU_MORE_SOFTKEY_RECORDINGS"},
    {ORLU_MORE_SOFTKEY_NETFLIX, "ORLU_MORE_SOFTKEY_NETFLIX"},
    {ORLU_MORE_SOFTKEY_AMAZON, "ORLU_MORE_SOFTKEY_AMAZON"},
    {ORLU_MORE_SOFTKEY_HULU, "ORLU_MORE_SOFTKEY_HULU"},
    {ORLU_MORE_SOFTKEY_VUDU, "ORLU_MORE_SOFTKEY_VUDU"},
    {ORLU_DVR, "ORLU_DVR"},
    {ORLU_UP_ARROW, "ORLU_UP_ARROW"},
    {ORLU_I_TV, "ORLU_I_TV"},
    {ORLU_RED, "ORLU_RED"},
    {ORLU_GREEN, "ORLU_GREEN"},
    {ORLU_YELLOW, "ORLU_YELLOW"},
    {ORLU_BLUE, "ORLU_BLUE"},
    {ORLU_ASSERT_OFF, "ORLU_ASSERT_OFF"},
    {ORLU_EPG, "ORLU_EPG"},
    {ORLU_ENTER, "ORLU_ENTER"},
    {ORLU_BACK, "ORLU_BACK"},
    {ORLU_INVALID_KEY, "ORLU_INVALID_KEY"},
};

constexpr std::string_view kPrefix = "ORLU_";
constexpr std::string_view kFree = "KEY_VAL_AVAIL_";

constexpr bool InOrder()
{
    return std::ranges::adjacent_find(kNames, std::ranges::greater_equal{}, &Row::key) ==
           std::end(kNames);
}

constexpr bool NamesAreUnique()
{
    for (const Row* row = kNames; row != std::end(kNames); ++row) {
        if (std::find_if(row + 1, std::end(kNames), [row](const Row& other) {
                return other.name == row->name;
            }) != std::end(kNames)) {
            return false;
        }
    }
    return true;
}

static_assert(InOrder());
static_assert(NamesAreUnique());

std::string Bare(std::string_view name)
{
    std::string bare(name);
    std::ranges::transform(bare, bare.begin(), [](unsigned char c) {
        return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : static_cast<char>(c);
    });
    if (bare.starts_with(kPrefix)) {
        bare.erase(0, kPrefix.size());
    }
    return bare;
}

}  // namespace

std::string KeyValueName(KEY_VALUE key)
{
    const Row* row = std::ranges::lower_bound(kNames, key, {}, &Row::key);
    if (row != std::end(kNames) && row->key == key) {
        return std::string(row->name);
    }
    const auto number = static_cast<std::size_t>(key - (row - kNames));
    std::string digits = std::to_string(number);
    return std::string(kFree) + (number < 10 ? "0" : "") + digits;
}

std::optional<KEY_VALUE> KeyValueFromName(std::string_view name)
{
    const std::string bare = Bare(name);
    for (unsigned number = 0; number <= 255; ++number) {
        const auto key = static_cast<KEY_VALUE>(number);
        if (Bare(KeyValueName(key)) == bare) {
            return key;
        }
    }
    return std::nullopt;
}

}  // namespace IpcProtocol
