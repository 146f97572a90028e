// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>

#include "lpm/Blaster.h"
#include "lpm/CecBusIF.h"
#include "orlu/Task.h"

namespace Lpm {

/// The CEC user control code of a product key; nothing for a key that CEC does not have.
std::optional<std::uint8_t> CecUserControl(std::uint32_t productKey);

/// Sends the product's CEC keys as user control codes. A pressed key is sent again each `kRepeat`
/// until its release, the next key, or the loss of the connection that pressed it. On one task.
class CecRemote {
public:
    /// A CEC device takes a key as held while repeats come at least every half second.
    static constexpr std::chrono::milliseconds kRepeat{250};

    /// `bus` must outlive this object.
    CecRemote(CecBusIF& bus, NotifyTargetTaskIF* task);

    void Press(std::uint32_t productKey, ConnectionId from);

    /// A release without a press does nothing.
    void Release();

    void ConnectionLost(ConnectionId connection);

private:
    void SendPressed();

    CecBusIF& m_bus;
    std::unique_ptr<Orlu::AlarmIF> m_alarm;
    std::optional<std::uint8_t> m_pressed;
    ConnectionId m_presser = 0;
};

}  // namespace Lpm
