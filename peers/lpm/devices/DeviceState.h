// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include <json/json.h>

#include "devices/Burst.h"

namespace Lpm::Devices {

enum class DeviceType : std::uint8_t { kTelevision, kSetTopBox, kDiscPlayer };

/// Empty for any other name; the names are "television", "set_top_box" and "disc_player".
std::optional<DeviceType> DeviceTypeByName(std::string_view name);

/// The state of a device, as far as its keys can change it:
///   all           power, screen (which menu is open) with the row and column of its cursor
///   television    volume 0 to 100, mute, channel 1 to 999, input
///   set_top_box   volume, mute, channel, playing, recording
///   disc_player   playing, chapter, tray
/// A device is off at first. Each function that changes the state takes one number.
class DeviceState {
public:
    explicit DeviceState(DeviceType type);

    bool Power() const { return m_power; }

    /// The members of the device's type, under the names above.
    Json::Value AsJson() const;

    void TogglePower(int unused, Microseconds now);
    void SetPower(int on, Microseconds now);
    /// Also unmutes.
    void StepVolume(int step, Microseconds now);
    void ToggleMute(int unused, Microseconds now);
    void StepChannel(int step, Microseconds now);
    /// Selects the channel that the digits so far make up. The number ends with its third digit,
    /// with any other key and after two seconds.
    void EnterDigit(int digit, Microseconds now);
    /// The channel before the last change by number or by step.
    void RecallChannel(int unused, Microseconds now);
    void NextInput(int unused, Microseconds now);
    void SetInput(int input, Microseconds now);
    /// 0 stop, 1 play, 2 pause, 3 fast forward, 4 rewind. A stopped disc player does not pause.
    void SetPlaying(int playing, Microseconds now);
    void StartRecording(int unused, Microseconds now);
    void StepChapter(int step, Microseconds now);
    void ToggleTray(int unused, Microseconds now);
    /// 0 none, 1 menu, 2 home, 3 guide, 4 display, 5 recordings. Opening the open screen closes it.
    void OpenScreen(int screen, Microseconds now);
    /// Move the cursor by rows and by columns if a screen is open.
    void MoveRow(int step, Microseconds now);
    void MoveColumn(int step, Microseconds now);

private:
    void SwitchToIdle();

    DeviceType m_type;
    bool m_power = false;
    int m_volume = 20;
    bool m_mute = false;
    int m_channel = 1;
    int m_lastChannel = 1;
    int m_input = 0;
    int m_playing = 0;
    bool m_recording = false;
    int m_chapter = 1;
    bool m_trayOpen = false;
    int m_screen = 0;
    int m_row = 0;
    int m_column = 0;
    std::string m_digits;
    Microseconds m_lastDigit{};
};

/// What a key of a device does.
struct Action {
    std::string_view name;
    void (DeviceState::*apply)(int argument, Microseconds now);
    int argument;
    bool stepsWhenHeld;    ///< false: only a new press counts
    bool worksWhenOff;     ///< also taken by a device that is off
    unsigned deviceTypes;  ///< bit n: the device type with that number has the key
};

/// Null if a device of that type has no such action.
const Action* FindAction(DeviceType type, std::string_view name);

}  // namespace Lpm::Devices
