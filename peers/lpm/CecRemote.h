// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <optional>

#include "lpm/Blaster.h"
#include "lpm/CecBusIF.h"

namespace Lpm {

/// The CEC user control code of a product key; nothing for a key that CEC does not have.
std::optional<std::uint8_t> CecUserControl(std::uint32_t productKey);

/// Turns the product's CEC keys into user control codes. A key stays pressed until its release, the
/// next key, or the loss of the connection that pressed it. On one task.
class CecRemote {
public:
    /// `bus` must outlive it.
    explicit CecRemote(CecBusIF& bus) : m_bus(bus) {}

    void Press(std::uint32_t productKey, ConnectionId from);

    /// A release without a press does nothing.
    void Release();

    void ConnectionLost(ConnectionId connection);

private:
    CecBusIF& m_bus;
    std::optional<std::uint8_t> m_pressed;
    ConnectionId m_presser = 0;
};

}  // namespace Lpm
