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

/// Turns the product's CEC keys into user control codes. A key stays pressed, and is said again and
/// again, until its release, the next key, or the loss of the connection that pressed it. On one
/// task.
class CecRemote {
public:
    /// The bus knows a held key by its repeats: at least each half second.
    static constexpr std::chrono::milliseconds kRepeat{250};

    /// `bus` must outlive it.
    CecRemote(CecBusIF& bus, NotifyTargetTaskIF* task);

    void Press(std::uint32_t productKey, ConnectionId from);

    /// A release without a press does nothing.
    void Release();

    void ConnectionLost(ConnectionId connection);

private:
    void Say();

    CecBusIF& m_bus;
    std::unique_ptr<Orlu::AlarmIF> m_alarm;
    std::optional<std::uint8_t> m_pressed;
    ConnectionId m_presser = 0;
};

}  // namespace Lpm
