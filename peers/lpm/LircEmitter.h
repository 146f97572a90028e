// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "infrared/InfraredFrame.h"
#include "orlu/Task.h"

namespace Lpm {

/// Sends frames through the kernel's `/dev/lircN`. The kernel's write blocks until the frame has
/// been sent. So frames are copied to a task of its own and written there one by one, in order, and
/// the blaster's task is not blocked. Frames that come faster than they can be sent are dropped
/// with a log line.
class LircEmitter : public FrameSinkIF {
public:
    /// Empty, with the reason in `why`, if the device cannot be opened or cannot send pulses.
    static std::unique_ptr<LircEmitter> Open(const std::string& device, std::string& why);

    /// Waits for the frame that is being written.
    ~LircEmitter() override;
    LircEmitter(const LircEmitter&) = delete;
    LircEmitter& operator=(const LircEmitter&) = delete;

    void HandleFrame(const InfraredFrame& frame) override;

private:
    explicit LircEmitter(int fd);

    void Write(std::uint32_t carrierHz, const std::vector<std::uint32_t>& durations);

    int m_fd;
    std::uint32_t m_carrierHz = 0;        ///< as last set in the kernel
    std::atomic<unsigned> m_waiting = 0;  ///< frames queued and not yet written
    std::shared_ptr<NotifyTargetTaskIF> m_task;
};

}  // namespace Lpm
