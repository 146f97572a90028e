// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <string>

#include "infrared/CodesetBinary.h"
#include "lpm/BlasterProtocol.h"
#include "lpm/Transmitter.h"

namespace Lpm {

/// Number of the connection on which a frame came; 0 is no connection.
using ConnectionId = std::uint64_t;

/// The blaster: holds code sets by device number, answers frames and sends keys. On one task.
///
/// A key with `SendFlag::kHold` or `kHoldFirst` is sent until an end key, the next key, the loss of
/// the connection that began it, or the deletion or replacement of its code set. Each press flips
/// the code set's toggle.
class Blaster {
public:
    static constexpr std::size_t kMaximumCodesets = 256;

    Blaster(NotifyTargetTaskIF* task, Transmitter::OnChange change);

    /// `sink` is not owned.
    void AddSink(FrameSinkIF* sink) { m_transmitter.AddSink(sink); }

    /// Executes one frame and returns the reply. Malformed bytes get a reply too.
    std::string Execute(Bytes frame, ConnectionId from);

    /// Stores a code set and replaces the one with that number. A refusal sets `why`.
    Status Store(DeviceNumber device, Bytes data, std::string& why);

    /// Ends the key that this connection began.
    void ConnectionLost(ConnectionId connection);

    /// Ends the key that is being sent.
    void Stop() { m_transmitter.Abort(); }

private:
    struct Codeset {
        std::shared_ptr<const CodesetBinary> binary;
        bool toggle = false;
    };

    struct Row;
    static const Row kRows[];

    std::string EndKey(const BlasterFrame& frame, ConnectionId from);
    std::string Key(const BlasterFrame& frame, ConnectionId from);
    std::string KeyMap(const BlasterFrame& frame, ConnectionId from);
    std::string Reset(const BlasterFrame& frame, ConnectionId from);
    std::string Version(const BlasterFrame& frame, ConnectionId from);
    std::string Delete(const BlasterFrame& frame, ConnectionId from);
    std::string List(const BlasterFrame& frame, ConnectionId from);
    std::string StoreFrame(const BlasterFrame& frame, ConnectionId from);
    void AbortIfSending(DeviceNumber device);

    Transmitter m_transmitter;
    std::map<DeviceNumber, Codeset> m_codesets;
    ConnectionId m_sender = 0;  ///< connection that began the last key
};

}  // namespace Lpm
