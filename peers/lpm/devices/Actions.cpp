// SPDX-License-Identifier: Apache-2.0

#include <algorithm>
#include <array>

#include "devices/DeviceState.h"

namespace Lpm::Devices {

namespace {

using State = DeviceState;

constexpr unsigned kTv = 1U << static_cast<unsigned>(DeviceType::kTelevision);
constexpr unsigned kBox = 1U << static_cast<unsigned>(DeviceType::kSetTopBox);
constexpr unsigned kDisc = 1U << static_cast<unsigned>(DeviceType::kDiscPlayer);
constexpr unsigned kTuners = kTv | kBox;
constexpr unsigned kPlayers = kBox | kDisc;
constexpr unsigned kAll = kTv | kBox | kDisc;

/// What a held key does: nothing after the press, or one more step with each repeat.
constexpr bool kPressOnly = false;
constexpr bool kSteps = true;

/// A key that also works when the device is off.
constexpr Action PowerKey(std::string_view name, decltype(Action::apply) apply, int argument)
{
    return {name, apply, argument, kPressOnly, true, kAll};
}

constexpr Action Key(std::string_view name, decltype(Action::apply) apply, int argument, bool steps,
                     unsigned types)
{
    return {name, apply, argument, steps, false, types};
}

constexpr Action Digit(std::string_view name, int digit)
{
    return Key(name, &State::EnterDigit, digit, kPressOnly, kTuners);
}

constexpr std::array kActions{
    PowerKey("power", &State::TogglePower, 0),
    PowerKey("power_on", &State::SetPower, 1),
    PowerKey("power_off", &State::SetPower, 0),
    Key("volume_up", &State::StepVolume, 1, kSteps, kTuners),
    Key("volume_down", &State::StepVolume, -1, kSteps, kTuners),
    Key("mute", &State::ToggleMute, 0, kPressOnly, kTuners),
    Key("channel_up", &State::StepChannel, 1, kSteps, kTuners),
    Key("channel_down", &State::StepChannel, -1, kSteps, kTuners),
    Key("last_channel", &State::RecallChannel, 0, kPressOnly, kTuners),
    Digit("digit_0", 0),
    Digit("digit_1", 1),
    Digit("digit_2", 2),
    Digit("digit_3", 3),
    Digit("digit_4", 4),
    Digit("digit_5", 5),
    Digit("digit_6", 6),
    Digit("digit_7", 7),
    Digit("digit_8", 8),
    Digit("digit_9", 9),
    Key("input_next", &State::NextInput, 0, kPressOnly, kTv),
    Key("hdmi_1", &State::SetInput, 1, kPressOnly, kTv),
    Key("hdmi_2", &State::SetInput, 2, kPressOnly, kTv),
    Key("hdmi_3", &State::SetInput, 3, kPressOnly, kTv),
    Key("hdmi_4", &State::SetInput, 4, kPressOnly, kTv),
    Key("stop", &State::SetPlaying, 0, kPressOnly, kPlayers),
    Key("play", &State::SetPlaying, 1, kPressOnly, kPlayers),
    Key("pause", &State::SetPlaying, 2, kPressOnly, kPlayers),
    Key("fast_forward", &State::SetPlaying, 3, kPressOnly, kPlayers),
    Key("rewind", &State::SetPlaying, 4, kPressOnly, kPlayers),
    Key("record", &State::StartRecording, 0, kPressOnly, kBox),
    Key("skip_forward", &State::StepChapter, 1, kPressOnly, kDisc),
    Key("skip_reverse", &State::StepChapter, -1, kPressOnly, kDisc),
    Key("eject", &State::ToggleTray, 0, kPressOnly, kDisc),
    Key("exit", &State::OpenScreen, 0, kPressOnly, kAll),
    Key("back", &State::OpenScreen, 0, kPressOnly, kAll),
    Key("select", &State::OpenScreen, 0, kPressOnly, kAll),
    Key("menu", &State::OpenScreen, 1, kPressOnly, kAll),
    Key("home", &State::OpenScreen, 2, kPressOnly, kAll),
    Key("guide", &State::OpenScreen, 3, kPressOnly, kTuners),
    Key("display", &State::OpenScreen, 4, kPressOnly, kAll),
    Key("recordings", &State::OpenScreen, 5, kPressOnly, kBox),
    Key("up", &State::MoveRow, -1, kSteps, kAll),
    Key("down", &State::MoveRow, 1, kSteps, kAll),
    Key("page_up", &State::MoveRow, -5, kSteps, kAll),
    Key("page_down", &State::MoveRow, 5, kSteps, kAll),
    Key("left", &State::MoveColumn, -1, kSteps, kAll),
    Key("right", &State::MoveColumn, 1, kSteps, kAll),
};

}  // namespace

const Action* FindAction(DeviceType type, std::string_view name)
{
    const auto* const found = std::ranges::find(kActions, name, &Action::name);
    const unsigned bit = 1U << static_cast<unsigned>(type);
    return found != kActions.end() && (found->deviceTypes & bit) != 0 ? found : nullptr;
}

}  // namespace Lpm::Devices
