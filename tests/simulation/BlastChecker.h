// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <deque>
#include <string>
#include <string_view>
#include <utility>

namespace Simulation {

/// Checks the blaster's emissions by LpmService's record alone: how long a held key was sent, how
/// long it paused, and for which part of ten seconds it was on. Times in milliseconds.
class BlastChecker {
public:
    /// `longestMs` is the limit for a held key that may not be sent continuously.
    explicit BlastChecker(double longestMs) : m_longestMs(longestMs) {}

    /// One line of the record.
    void ReadLine(std::string_view line);

    /// Checks whether a key that is still on has been on for too long at `now`.
    void CheckAt(double now);

    /// Permits continuous sending of keys of all code sets, or of the device ("0x0803").
    void PermitAll() { m_permitAll = true; }
    void Permit(std::string device) { m_permitted = std::move(device); }
    /// Ends the permission at `now`. A key that is on too long already has another 10 ms.
    void PermitNone(double now);

    /// `stalled`: the blaster reads nothing from the service, so emissions are not checked.
    void Disregard(bool stalled);

    bool IsOn() const { return m_on; }
    double OnFor(double now) const { return m_on ? now - m_since : 0; }
    /// Whether a held key that must pause is being sent.
    bool IsBursting() const { return m_on && m_held && !m_isStalled && !IsPermitted(); }

    /// The first fault; empty if there is none.
    const std::string& Fault() const { return m_fault; }

    struct Figures {
        double longestOn = 0;
        double shortestPause = 1e9;  ///< between two bursts of one press
        double worstDuty = 0;        ///< highest share of ten seconds that end with a burst
        std::uint64_t bursts = 0;
        double onMs = 0;  ///< time on of all keys, permitted or not
    };
    const Figures& Seen() const { return m_seen; }

private:
    bool IsPermitted() const { return m_permitAll || m_device == m_permitted; }
    void ReadFrame(std::string_view hex);
    void SwitchOn(double now, std::string_view device);
    void SwitchOff(double now);

    const double m_longestMs;
    bool m_permitAll = false;
    std::string m_permitted;
    bool m_isStalled = false;
    bool m_held = false;
    bool m_nextBurst = false;
    bool m_on = false;
    std::string m_device;
    double m_since = 0;
    double m_offSince = -1e9;
    std::deque<std::pair<double, double>> m_bursts;
    Figures m_seen;
    std::string m_fault;
};

}  // namespace Simulation
