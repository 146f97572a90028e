// SPDX-License-Identifier: Apache-2.0

#include "devices/VirtualDevices.h"

#include <optional>
#include <utility>

#include "devices/DevicesFile.h"
#include "devices/FrameMonitor.h"
#include "devices/Json.h"

namespace Lpm {

namespace {

using Devices::Device;
using Devices::Microseconds;

/// A held key is repeated at least every half second; the rest is for late messages.
constexpr Microseconds kCecHold = std::chrono::milliseconds(550);

class LoadedDevices : public VirtualDevices {
public:
    LoadedDevices(std::vector<Devices::DeviceDescription> descriptions, OnLine line, Clock clock)
        : m_line(line), m_clock(std::move(clock)), m_monitor(std::move(line))
    {
        for (auto& description : descriptions) {
            m_devices.emplace_back(std::move(description));
        }
    }

    void HandleFrame(const InfraredFrame& frame) override;
    void ReceiveCecKey(std::uint8_t userControl, bool pressed) override;
    std::string StateAsJson() const override;

private:
    struct CecKey {
        std::uint8_t userControl;
        Microseconds pressed;
    };

    Microseconds Now() const { return std::chrono::milliseconds(m_clock()); }
    void ReportChange(const Device& device, Device::Change change) const;

    OnLine m_line;
    Clock m_clock;
    Devices::FrameMonitor m_monitor;
    std::vector<Device> m_devices;
    std::optional<CecKey> m_cecKey;
};

void LoadedDevices::HandleFrame(const InfraredFrame& frame)
{
    const Microseconds now = Now();
    // First the line of the frame, then the lines of what it changed.
    m_monitor.Receive(frame, now);
    for (Device& device : m_devices) {
        for (Device::Change& change : device.Receive(frame, now)) {
            ReportChange(device, std::move(change));
        }
    }
}

void LoadedDevices::ReceiveCecKey(std::uint8_t userControl, bool pressed)
{
    if (!pressed) {
        m_cecKey.reset();
        return;
    }
    const Microseconds now = Now();
    const bool repeat =
        m_cecKey && m_cecKey->userControl == userControl && now - m_cecKey->pressed <= kCecHold;
    m_cecKey = CecKey{userControl, now};
    for (Device& device : m_devices) {
        if (auto change = device.ReceiveCecKey(userControl, repeat, now)) {
            ReportChange(device, std::move(*change));
        }
    }
}

std::string LoadedDevices::StateAsJson() const
{
    Json::Value all(Json::objectValue);
    for (const Device& device : m_devices) {
        all[device.Name()] = device.StateAsJson();
    }
    return Devices::OneLine(all);
}

void LoadedDevices::ReportChange(const Device& device, Device::Change change) const
{
    Json::Value line;
    line["device"] = device.Name();
    line["cause"] = std::move(change.cause);
    line["state"] = std::move(change.state);
    m_line(Devices::OneLine(line));
}

}  // namespace

std::unique_ptr<VirtualDevices> VirtualDevices::Load(const std::string& text, OnLine line,
                                                     std::string& why, Clock clock)
{
    auto descriptions = Devices::ParseDevicesFile(text, why);
    if (!descriptions) {
        return nullptr;
    }
    return std::make_unique<LoadedDevices>(std::move(*descriptions), std::move(line),
                                           std::move(clock));
}

}  // namespace Lpm
