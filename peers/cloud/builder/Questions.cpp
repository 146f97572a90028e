// SPDX-License-Identifier: Apache-2.0

#include "cloud/builder/Questions.h"

#include "ProtoBufs/UEIKeyNames.pb.h"
#include "cloud/builder/Collection.h"
#include "infrared/CodesetBinary.h"
#include "infrared/KeyRenderer.h"

#include <algorithm>
#include <array>
#include <string>

namespace Cloud {

namespace {

using namespace UEIKeyNamesPB;

using Keys = std::array<ueikey, kMaximumQuestions>;

struct TypeRow {
    std::string_view type;
    Keys keys;
};

/// Keys with a visible and harmless effect come first.
constexpr std::array<TypeRow, 4> kTypes = {{
    {"TV",
     {kKey_POWER, kKey_VOLUME_UP, kKey_CHANNEL_UP, kKey_MUTE, kKey_INPUT, kKey_DEVICE_MENU,
      kKey_HOME, kKey_CURSOR_UP, kKey_MENU_SELECT, kKey_EXIT, kKey_BACK, kKey_DIGIT_1}},
    {"STB",
     {kKey_POWER, kKey_CHANNEL_UP, kKey_GUIDE, kKey_DEVICE_MENU, kKey_HOME, kKey_DIGIT_1,
      kKey_CURSOR_UP, kKey_MENU_SELECT, kKey_EXIT, kKey_BACK, kKey_PLAY, kKey_DISPLAY}},
    {"DVD",
     {kKey_POWER, kKey_OPEN_CLOSE_EJECT, kKey_PLAY, kKey_PAUSE, kKey_STOP, kKey_TITLE_MENU,
      kKey_DEVICE_MENU, kKey_POPUP_MENU, kKey_SKIP_FWD, kKey_CURSOR_UP, kKey_MENU_SELECT,
      kKey_DISPLAY}},
    {"OTT",
     {kKey_POWER, kKey_HOME, kKey_CURSOR_UP, kKey_CURSOR_DOWN, kKey_MENU_SELECT, kKey_BACK,
      kKey_DEVICE_MENU, kKey_PLAY, kKey_PAUSE, kKey_VOLUME_UP, kKey_MUTE, kKey_EXIT}},
}};

const Keys& KeysOf(std::string_view type)
{
    const auto* row = std::ranges::find(kTypes, type, &TypeRow::type);
    return row == kTypes.end() ? kTypes.front().keys : row->keys;
}

/// Hashes carrier and durations of the first frame, so that a raw key and a scancode that send the
/// same are one signal.
std::int64_t SignalHash(const Lpm::CodesetBinary& codeset, const Lpm::CodesetKey& key)
{
    Lpm::KeyRenderer renderer(codeset, key, false);
    const Lpm::InfraredFrame frame = renderer.Frame(0);
    std::string text = std::to_string(frame.carrierHz);
    for (const std::uint32_t duration : frame.durationsUs) {
        text += ' ' + std::to_string(duration);
    }
    return static_cast<std::int64_t>(ContentHash(text));
}

}  // namespace

std::vector<Question> Questions(std::string_view type, std::string_view binary)
{
    std::string why;
    const std::vector<std::uint8_t> bytes(binary.begin(), binary.end());
    const auto codeset = Lpm::CodesetBinary::Parse(bytes, why);
    std::vector<Question> questions;
    if (!codeset) {
        return questions;
    }
    for (const ueikey number : KeysOf(type)) {
        const Lpm::CodesetKey* key = codeset->Find(static_cast<std::uint8_t>(number));
        if (key != nullptr) {
            questions.push_back({key->ueiKey, SignalHash(*codeset, *key)});
        }
    }
    return questions;
}

}  // namespace Cloud
