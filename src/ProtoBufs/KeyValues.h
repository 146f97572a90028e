// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace IpcProtocol {

/// The keys of the product, from the LPM catalogue. All numbers from 0 to 255 are values. Those
/// without a name here are free and are named `KEY_VAL_AVAIL_00`, `KEY_VAL_AVAIL_01` and so on, in
/// order. Mute (1) and volume down (2) are this project's own numbers, for CEC.
enum KEY_VALUE : std::uint8_t {
    ORLU_MUTE = 1,
    ORLU_VOLUME_DOWN = 2,
    ORLU_VOLUME_UP = 3,
    ORLU_LAST_CHANNEL = 20,
    ORLU_CHANNEL_PRESET_DOWN = 24,
    ORLU_CHANNEL_PRESET_UP = 25,
    ORLU_STOP = 26,
    ORLU_DOWN_ARROW = 32,
    ORLU_TV_POWER = 36,
    ORLU_SOURCE_POWER = 44,
    ORLU_EXIT = 48,
    ORLU_TV_INPUT = 60,
    ORLU_NUMBER_0 = 64,
    ORLU_NUMBER_1 = 65,
    ORLU_NUMBER_2 = 66,
    ORLU_NUMBER_3 = 67,
    ORLU_NUMBER_4 = 68,
    ORLU_NUMBER_5 = 69,
    ORLU_NUMBER_6 = 70,
    ORLU_NUMBER_7 = 71,
    ORLU_NUMBER_8 = 72,
    ORLU_NUMBER_9 = 73,
    ORLU_PLAY = 85,
    ORLU_PAUSE = 86,
    ORLU_FAST_REVERSE = 87,
    ORLU_FAST_FORWARD = 88,
    ORLU_QUICK_REPLAY = 89,
    ORLU_QUICK_SKIP = 90,
    ORLU_DASH = 92,
    ORLU_RIGHT_ARROW = 96,
    ORLU_INFO = 100,
    ORLU_PAGE_DOWN = 104,
    ORLU_PAGE_UP = 105,
    HDMI_1 = 112,
    HDMI_2 = 113,
    HDMI_3 = 114,
    HDMI_4 = 115,
    HDMI_5 = 116,
    ORLU_MORE_SOFTKEY_PANDORA = 138,
    ORLU_MORE_SOFTKEY_YOUTUBE = 139,
    ORLU_ASSERT_ON = 140,
    ORLU_MORE_SOFTKEY_YAHOO = 142,
    ORLU_MORE_SOFTKEY_SPOTIFY = 143,
    ORLU_DVD_MENU = 144,
    ORLU_MORE_SOFTKEY_DELIMITER = 154,
    ORLU_RECORD = 156,
    ORLU_LEFT_ARROW = 160,
    ORLU_MORE_SOFTKEY_RECORDINGS = 162,
    ORLU_MORE_SOFTKEY_NETFLIX = 163,
    ORLU_MORE_SOFTKEY_AMAZON = 164,
    ORLU_MORE_SOFTKEY_HULU = 167,
    ORLU_MORE_SOFTKEY_VUDU = 176,
    ORLU_DVR = 182,
    ORLU_UP_ARROW = 192,
    ORLU_I_TV = 193,
    ORLU_RED = 197,
    ORLU_GREEN = 198,
    ORLU_YELLOW = 199,
    ORLU_BLUE = 200,
    ORLU_ASSERT_OFF = 204,
    ORLU_EPG = 208,
    ORLU_ENTER = 224,
    ORLU_BACK = 248,
    ORLU_INVALID_KEY = 255,
};

/// The name as above, free numbers included.
std::string KeyValueName(KEY_VALUE key);

/// Takes a name without regard to case, with or without "ORLU_" in front: "ORLU_TV_POWER",
/// "tv_power", "hdmi_1". Nothing for any other text, numbers included.
std::optional<KEY_VALUE> KeyValueFromName(std::string_view name);

}  // namespace IpcProtocol
