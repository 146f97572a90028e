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

constexpr bool kPressOnly = false;
constexpr bool kSteps = true;

constexpr Action Wake(std::string_view name, decltype(Action::apply) apply, int argument)
{
    return {name, apply, argument, kPressOnly, true, kAll};
}

constexpr Action Do(std::string_view name, decltype(Action::apply) apply, int argument, bool steps,
                    unsigned types)
{
    return {name, apply, argument, steps, false, types};
}

constexpr Action Digit(std::string_view name, int digit)
{
    return Do(name, &State::EnterDigit, digit, kPressOnly, kTuners);
}

constexpr std::array kActions{
    Wake("power", &State::TogglePower, 0),
    Wake("power_on", &State::SetPower, 1),
    Wake("power_off", &State::SetPower, 0),
    Do("volume_up", &State::StepVolume, 1, kSteps, kTuners),
    Do("volume_down", &State::StepVolume, -1, kSteps, kTuners),
    Do("mute", &State::ToggleMute, 0, kPressOnly, kTuners),
    Do("channel_up", &State::StepChannel, 1, kSteps, kTuners),
    Do("channel_down", &State::StepChannel, -1, kSteps, kTuners),
    Do("last_channel", &State::RecallChannel, 0, kPressOnly, kTuners),
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
    Do("input_next", &State::NextInput, 0, kPressOnly, kTv),
    Do("hdmi_1", &State::SetInput, 1, kPressOnly, kTv),
    Do("hdmi_2", &State::SetInput, 2, kPressOnly, kTv),
    Do("hdmi_3", &State::SetInput, 3, kPressOnly, kTv),
    Do("hdmi_4", &State::SetInput, 4, kPressOnly, kTv),
    Do("stop", &State::SetPlaying, 0, kPressOnly, kPlayers),
    Do("play", &State::SetPlaying, 1, kPressOnly, kPlayers),
    Do("pause", &State::SetPlaying, 2, kPressOnly, kPlayers),
    Do("fast_forward", &State::SetPlaying, 3, kPressOnly, kPlayers),
    Do("rewind", &State::SetPlaying, 4, kPressOnly, kPlayers),
    Do("record", &State::StartRecording, 0, kPressOnly, kBox),
    Do("skip_forward", &State::StepChapter, 1, kPressOnly, kDisc),
    Do("skip_reverse", &State::StepChapter, -1, kPressOnly, kDisc),
    Do("eject", &State::ToggleTray, 0, kPressOnly, kDisc),
    Do("exit", &State::OpenScreen, 0, kPressOnly, kAll),
    Do("back", &State::OpenScreen, 0, kPressOnly, kAll),
    Do("select", &State::OpenScreen, 0, kPressOnly, kAll),
    Do("menu", &State::OpenScreen, 1, kPressOnly, kAll),
    Do("home", &State::OpenScreen, 2, kPressOnly, kAll),
    Do("guide", &State::OpenScreen, 3, kPressOnly, kTuners),
    Do("display", &State::OpenScreen, 4, kPressOnly, kAll),
    Do("recordings", &State::OpenScreen, 5, kPressOnly, kBox),
    Do("up", &State::MoveRow, -1, kSteps, kAll),
    Do("down", &State::MoveRow, 1, kSteps, kAll),
    Do("page_up", &State::MoveRow, -5, kSteps, kAll),
    Do("page_down", &State::MoveRow, 5, kSteps, kAll),
    Do("left", &State::MoveColumn, -1, kSteps, kAll),
    Do("right", &State::MoveColumn, 1, kSteps, kAll),
};

}  // namespace

const Action* FindAction(DeviceType type, std::string_view name)
{
    const auto* const found = std::ranges::find(kActions, name, &Action::name);
    const unsigned bit = 1U << static_cast<unsigned>(type);
    return found != kActions.end() && (found->deviceTypes & bit) != 0 ? found : nullptr;
}

}  // namespace Lpm::Devices
