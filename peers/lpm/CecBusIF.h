// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>

namespace Lpm {

/// Sends the product's keys on the CEC bus. On one task.
class CecBusIF {
public:
    virtual ~CecBusIF() = default;

    /// Sends a user control code to the television, pressed or released.
    virtual void SendUserControl(std::uint8_t userControl, bool pressed) = 0;
};

}  // namespace Lpm
