// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <deque>
#include <string>
#include <string_view>
#include <utility>

namespace Simulation {

/// Watches the light by LpmService's own record and by nothing else: how long a held key was sent,
/// how long it paused, and which part of ten seconds it was on. Times in milliseconds.
class BlastChecker {
public:
    /// A key that is held and not permitted to go on must end after so long.
    explicit BlastChecker(double longestMs) : m_longestMs(longestMs) {}

    /// One line of the record.
    void ReadLine(std::string_view line);

    /// Nothing has come since: whether what is on has been on for too long by `now`.
    void CheckAt(double now);

    /// Keys of every code set, or of the device ("0x0803"), may be sent without a pause.
    void PermitAll() { m_permitAll = true; }
    void Permit(std::string device) { m_permitted = std::move(device); }
    /// From `now` on none may; one that is on has another 10 ms, if its own time is over.
    void PermitNone(double now);

    /// Until further notice the blaster does not hear the service: what it sends is its own matter.
    void Disregard(bool deaf);

    bool IsOn() const { return m_on; }
    double OnFor(double now) const { return m_on ? now - m_since : 0; }
    /// Whether a held key that must pause is being sent.
    bool IsBursting() const { return m_on && m_held && !m_deaf && !IsPermitted(); }

    /// What went wrong first; empty: nothing.
    const std::string& Fault() const { return m_fault; }

    struct Figures {
        double longestOn = 0;
        double shortestPause = 1e9;  ///< between two bursts of one press
        double worstDuty = 0;        ///< of any ten seconds that end with a burst
        std::uint64_t bursts = 0;
        double litMs = 0;  ///< of all keys, permitted or not
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
    bool m_deaf = false;
    bool m_held = false;
    bool m_nextBurst = false;
    bool m_on = false;
    std::string m_device;
    double m_since = 0;
    double m_darkSince = -1e9;
    std::deque<std::pair<double, double>> m_bursts;
    Figures m_seen;
    std::string m_fault;
};

}  // namespace Simulation
