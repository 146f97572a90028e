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

/// Empty for a name that is none; the names are "television", "set_top_box" and "disc_player".
std::optional<DeviceType> DeviceTypeByName(std::string_view name);

/// What a device is doing, as far as its keys can change it:
///   all           power, screen (which menu is open) with the row and column of its cursor
///   television    volume 0 to 100, mute, channel 1 to 999, input
///   set_top_box   volume, mute, channel, playing, recording
///   disc_player   playing, chapter, tray
/// A device begins switched off. Each change takes one number; what it means stands with it.
class DeviceState {
public:
    explicit DeviceState(DeviceType type);

    bool Power() const { return m_power; }

    /// The members of the device's type, under the names above.
    Json::Value AsJson() const;

    void TogglePower(int unused, Microseconds now);
    void SetPower(int on, Microseconds now);
    /// Also sound again, if it was muted.
    void StepVolume(int step, Microseconds now);
    void ToggleMute(int unused, Microseconds now);
    void StepChannel(int step, Microseconds now);
    /// The channel is that of the digits so far. The number ends with its third digit, with any
    /// other key and after two seconds.
    void EnterDigit(int digit, Microseconds now);
    /// The channel before the last change by number or by step.
    void RecallChannel(int unused, Microseconds now);
    void NextInput(int unused, Microseconds now);
    void SetInput(int input, Microseconds now);
    /// 0 stop, 1 play, 2 pause, 3 fast forward, 4 rewind. A pause needs something to pause.
    void SetPlaying(int playing, Microseconds now);
    void StartRecording(int unused, Microseconds now);
    void StepChapter(int step, Microseconds now);
    void ToggleTray(int unused, Microseconds now);
    /// 0 none, 1 menu, 2 home, 3 guide, 4 display, 5 recordings; the one that is open closes.
    void OpenScreen(int screen, Microseconds now);
    /// Moves by rows and by columns, where a screen is open.
    void MoveRow(int step, Microseconds now);
    void MoveColumn(int step, Microseconds now);

private:
    void BringToRest();

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

/// A key of a device by what it does.
struct Action {
    std::string_view name;
    void (DeviceState::*apply)(int argument, Microseconds now);
    int argument;
    bool stepsWhenHeld;    ///< false: only a new press counts
    bool wakes;            ///< also taken by a device that is off
    unsigned deviceTypes;  ///< bit n: the device type with that number has the key
};

/// Null if a device of that type has no such action.
const Action* FindAction(DeviceType type, std::string_view name);

}  // namespace Lpm::Devices
