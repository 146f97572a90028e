// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "lpm/BlasterProtocol.h"

namespace Lpm {

/// Writes a JSON line for each frame and CEC key that is received, and for the begin and the end of
/// each key that the blaster sends. Each line is written at once. `ms` is the monotonic clock with
/// three decimals.
///
///     {"ms": 12.345, "id": 80, "frame": "000100"}
///     {"ms": 12.345, "id": 65539, "length": 105, "type": 2, "frame": "0067..."}
///     {"ms": 12.345, "id": 169, "value": 36, "state": 0}
///     {"ms": 12.345, "ir": {"device": "0x0803", "key": 1, "on": true}}
class Recorder {
public:
    using Clock = std::function<std::chrono::microseconds()>;
    /// Gets one line with its newline. Returns false if the line could not be written.
    using Writer = std::function<bool(std::string_view line)>;

    Recorder(Clock clock, Writer writer);

    /// Appends to a file, one write for each line. Empty, with the reason in `why`, if it cannot be
    /// opened.
    static std::unique_ptr<Recorder> Open(const std::string& path, std::string& why);

    void Frame(std::uint32_t id, std::string_view frame);
    void BulkFrame(std::uint32_t id, std::uint32_t length, std::uint32_t type,
                   std::string_view frame);
    void CecKey(std::uint32_t id, std::uint32_t value, std::uint32_t state);
    /// `on`: the key begins to be sent; else its emission ends.
    void Emission(DeviceNumber device, std::uint8_t key, bool on);

private:
    void Write(const std::string& members);

    Clock m_clock;
    Writer m_writer;
    bool m_failed = false;
};

}  // namespace Lpm
