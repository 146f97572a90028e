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

/// Sends the light through the kernel's `/dev/lircN`. The kernel's write takes as long as the frame
/// shines, so frames are copied to a task of its own and written there one by one, in order: the
/// blaster's task is never held up. Frames that come faster than they can shine are dropped with a
/// log line.
class LircEmitter : public FrameSinkIF {
public:
    /// Empty, with the reason in `why`, if the device cannot be had or cannot send pulses.
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
    std::uint32_t m_carrierHz = 0;        ///< as the kernel was told
    std::atomic<unsigned> m_waiting = 0;  ///< frames handed over and not yet written
    std::shared_ptr<NotifyTargetTaskIF> m_task;
};

}  // namespace Lpm
