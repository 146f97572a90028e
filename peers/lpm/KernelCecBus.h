// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "lpm/CecBusIF.h"
#include "orlu/Task.h"

namespace Lpm {

/// The CEC bus behind the kernel's `/dev/cecN`; the product is an audio system on it. A task of its
/// own waits in the kernel for messages of other devices.
class KernelCecBus : public CecBusIF {
public:
    /// Gets a message of the bus, header first, on the task that was given to `Open`.
    using OnMessage = std::function<void(const std::vector<std::uint8_t>&)>;

    /// Empty, with the reason in `why`, if the device cannot be opened or set up.
    static std::unique_ptr<KernelCecBus> Open(const std::string& device, NotifyTargetTaskIF* task,
                                              OnMessage message, std::string& why);
    ~KernelCecBus() override;
    KernelCecBus(const KernelCecBus&) = delete;
    KernelCecBus& operator=(const KernelCecBus&) = delete;

    /// Does not wait for the bus. A refusal by the kernel is logged.
    void SendUserControl(std::uint8_t userControl, bool pressed) override;

private:
    class Receiver;

    explicit KernelCecBus(int fd);

    bool Claim(std::string& why);

    int m_fd;
    std::unique_ptr<Receiver> m_receiver;
};

}  // namespace Lpm
