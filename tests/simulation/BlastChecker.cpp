// SPDX-License-Identifier: Apache-2.0

#include "simulation/BlastChecker.h"

#include <algorithm>
#include <cstdlib>

#include <fmt/format.h>

namespace Simulation {

namespace {

constexpr double kWindowMs = 10'000;
constexpr std::string_view kKeyCommand = "01";

/// The text between `name` and `end`; empty if the name does not occur.
std::string_view Member(std::string_view line, std::string_view name, char end)
{
    const auto at = line.find(name);
    if (at == std::string_view::npos) {
        return {};
    }
    const auto text = line.substr(at + name.size());
    return text.substr(0, text.find(end));
}

}  // namespace

void BlastChecker::ReadLine(std::string_view line)
{
    const double now = std::strtod(std::string(Member(line, "\"ms\": ", ',')).c_str(), nullptr);
    CheckAt(now);
    if (const auto frame = Member(line, "\"frame\": \"", '"'); !frame.empty()) {
        ReadFrame(frame);
    } else if (line.find("\"on\": true") != std::string_view::npos) {
        SwitchOn(now, Member(line, "\"device\": \"", '"'));
    } else if (line.find("\"on\": false") != std::string_view::npos) {
        SwitchOff(now);
    }
}

void BlastChecker::ReadFrame(std::string_view hex)
{
    // LHLL command DHDL key flag
    if (hex.size() >= 14 && hex.substr(4, 2) == kKeyCommand) {
        const auto flag = hex.substr(12, 2);
        m_held = flag != "80";
        m_nextBurst = flag == "00";
    }
}

void BlastChecker::SwitchOn(double now, std::string_view device)
{
    m_on = true;
    m_since = now;
    m_device = device;
    if (m_nextBurst && !IsPermitted() && !m_isStalled) {
        m_seen.shortestPause = std::min(m_seen.shortestPause, now - m_offSince);
    }
}

void BlastChecker::SwitchOff(double now)
{
    if (!m_on) {
        return;
    }
    m_on = false;
    m_offSince = now;
    m_seen.onMs += now - m_since;
    if (!m_held || IsPermitted() || m_isStalled) {
        return;
    }
    ++m_seen.bursts;
    m_seen.longestOn = std::max(m_seen.longestOn, now - m_since);
    m_bursts.emplace_back(m_since, now);
    double on = 0;
    while (m_bursts.front().second < now - kWindowMs) {
        m_bursts.pop_front();
    }
    for (const auto& [from, to] : m_bursts) {
        on += to - std::max(from, now - kWindowMs);
    }
    m_seen.worstDuty = std::max(m_seen.worstDuty, on / kWindowMs);
}

void BlastChecker::PermitNone(double now)
{
    if (m_on && IsPermitted()) {
        m_since = std::max(m_since, now - (m_longestMs - 10));
    }
    m_permitAll = false;
    m_permitted.clear();
}

void BlastChecker::CheckAt(double now)
{
    if (IsBursting() && now - m_since > m_longestMs && m_fault.empty()) {
        m_fault = fmt::format("the light of {} is on since {} ms, and still at {} ms", m_device,
                              m_since, now);
    }
}

void BlastChecker::Disregard(bool stalled)
{
    m_isStalled = stalled;
    m_bursts.clear();
    if (!stalled) {
        m_on = false;  // an emission that began while stalled is not checked
    }
}

}  // namespace Simulation
