// SPDX-License-Identifier: Apache-2.0

#include "devices/DeviceState.h"

#include <algorithm>
#include <array>
#include <utility>

namespace Lpm::Devices {

namespace {

constexpr int kMaxVolume = 100;
constexpr int kMaxChannel = 999;
constexpr std::size_t kChannelDigits = 3;
constexpr Microseconds kDigitPause = std::chrono::seconds(2);
constexpr int kMaxChapter = 99;
constexpr int kLastCell = 9;

constexpr std::array kTypes{"television", "set_top_box", "disc_player"};
constexpr std::array kInputs{"tv", "hdmi_1", "hdmi_2", "hdmi_3", "hdmi_4"};
constexpr std::array kPlaying{"stopped", "playing", "paused", "fast_forward", "rewind"};
constexpr std::array kScreens{"none", "menu", "home", "guide", "display", "recordings"};

constexpr int kStopped = 0;
constexpr int kPaused = 2;

template <std::size_t Size>
std::string NameAt(const std::array<const char*, Size>& names, int index)
{
    return names[static_cast<std::size_t>(index)];
}

}  // namespace

std::optional<DeviceType> DeviceTypeByName(std::string_view name)
{
    const auto* const found = std::ranges::find(kTypes, name);
    if (found == kTypes.end()) {
        return std::nullopt;
    }
    return static_cast<DeviceType>(found - kTypes.begin());
}

DeviceState::DeviceState(DeviceType type) : m_type(type) {}

Json::Value DeviceState::AsJson() const
{
    Json::Value state;
    state["power"] = m_power;
    state["screen"] = NameAt(kScreens, m_screen);
    state["row"] = m_row;
    state["column"] = m_column;
    if (m_type != DeviceType::kDiscPlayer) {
        state["volume"] = m_volume;
        state["mute"] = m_mute;
        state["channel"] = m_channel;
    }
    if (m_type == DeviceType::kTelevision) {
        state["input"] = NameAt(kInputs, m_input);
        return state;
    }
    state["playing"] = NameAt(kPlaying, m_playing);
    if (m_type == DeviceType::kSetTopBox) {
        state["recording"] = m_recording;
        return state;
    }
    state["chapter"] = m_chapter;
    state["tray"] = m_trayOpen ? "open" : "closed";
    return state;
}

void DeviceState::TogglePower(int /*unused*/, Microseconds now)
{
    SetPower(m_power ? 0 : 1, now);
}

void DeviceState::SetPower(int on, Microseconds /*now*/)
{
    if (m_power && on == 0) {
        SwitchToIdle();
    }
    m_power = on != 0;
}

void DeviceState::SwitchToIdle()
{
    m_playing = kStopped;
    m_screen = 0;
    m_row = 0;
    m_column = 0;
    m_digits.clear();
}

void DeviceState::StepVolume(int step, Microseconds /*now*/)
{
    m_volume = std::clamp(m_volume + step, 0, kMaxVolume);
    m_mute = false;
    m_digits.clear();
}

void DeviceState::ToggleMute(int /*unused*/, Microseconds /*now*/)
{
    m_mute = !m_mute;
    m_digits.clear();
}

void DeviceState::StepChannel(int step, Microseconds /*now*/)
{
    m_lastChannel = m_channel;
    m_channel = (m_channel - 1 + step + kMaxChannel) % kMaxChannel + 1;
    m_digits.clear();
}

void DeviceState::EnterDigit(int digit, Microseconds now)
{
    if (m_digits.size() == kChannelDigits || now - m_lastDigit > kDigitPause) {
        m_digits.clear();
    }
    // Only the first digit: "last channel" must not go back to a channel half entered.
    if (m_digits.empty()) {
        m_lastChannel = m_channel;
    }
    m_lastDigit = now;
    m_digits += static_cast<char>('0' + digit);
    const int channel = std::stoi(m_digits);
    // Leading zeros select no channel yet: channels count from 1.
    if (channel > 0) {
        m_channel = channel;
    }
}

void DeviceState::RecallChannel(int /*unused*/, Microseconds /*now*/)
{
    std::swap(m_channel, m_lastChannel);
    m_digits.clear();
}

void DeviceState::NextInput(int /*unused*/, Microseconds now)
{
    SetInput((m_input + 1) % static_cast<int>(kInputs.size()), now);
}

void DeviceState::SetInput(int input, Microseconds /*now*/)
{
    m_input = input;
    m_digits.clear();
}

void DeviceState::SetPlaying(int playing, Microseconds /*now*/)
{
    m_digits.clear();
    // A set-top box pauses live television, so it need not play a recording.
    const bool canPause = m_playing != kStopped || m_type == DeviceType::kSetTopBox;
    if (playing == kPaused && !canPause) {
        return;
    }
    m_playing = playing;
    if (playing == kStopped) {
        m_recording = false;
    } else {
        // A player closes its tray before it plays.
        m_trayOpen = false;
    }
}

void DeviceState::StartRecording(int /*unused*/, Microseconds /*now*/)
{
    m_recording = true;
    m_digits.clear();
}

void DeviceState::StepChapter(int step, Microseconds /*now*/)
{
    if (m_playing != kStopped) {
        m_chapter = std::clamp(m_chapter + step, 1, kMaxChapter);
    }
}

void DeviceState::ToggleTray(int /*unused*/, Microseconds /*now*/)
{
    m_trayOpen = !m_trayOpen;
    m_playing = kStopped;
    m_chapter = 1;
}

void DeviceState::OpenScreen(int screen, Microseconds /*now*/)
{
    m_screen = m_screen == screen ? 0 : screen;
    m_row = 0;
    m_column = 0;
    m_digits.clear();
}

void DeviceState::MoveRow(int step, Microseconds /*now*/)
{
    m_digits.clear();
    if (m_screen != 0) {
        m_row = std::clamp(m_row + step, 0, kLastCell);
    }
}

void DeviceState::MoveColumn(int step, Microseconds /*now*/)
{
    m_digits.clear();
    if (m_screen != 0) {
        m_column = std::clamp(m_column + step, 0, kLastCell);
    }
}

}  // namespace Lpm::Devices
