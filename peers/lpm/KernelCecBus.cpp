// SPDX-License-Identifier: Apache-2.0

#include "lpm/KernelCecBus.h"

#include <fcntl.h>
#include <linux/cec.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <utility>

#include "orlu/Callback.h"
#include "orlu/DPrint.h"

namespace Lpm {

namespace {

constexpr DPrint kLog("KernelCecBus");
constexpr std::uint32_t kReceiveWaitMs = 1000;

std::string Reason(const char* what)
{
    return std::string(what) + ": " + std::strerror(errno);
}

}  // namespace

/// Waits for messages on a descriptor of its own, so that a wait does not delay sending.
class KernelCecBus::Receiver {
public:
    Receiver(int fd, NotifyTargetTaskIF* task, OnMessage message)
        : m_fd(fd),
          m_message(std::move(message), task),
          m_task(IL::CreateTask("LpmCecReceiver", ""))
    {
    }
    /// Blocks until the running CEC_RECEIVE returns, a second at most.
    ~Receiver()
    {
        m_task->Stop();
        m_task->Queue()->Join();
        close(m_fd);
    }
    Receiver(const Receiver&) = delete;
    Receiver& operator=(const Receiver&) = delete;

    /// Queues one CEC_RECEIVE, which queues the next. The task can stop between two of them.
    void Queue()
    {
        m_task->QueueNotificationNonBlocking([this] { Receive(); });
    }

private:
    void Receive()
    {
        cec_msg message{};
        message.timeout = kReceiveWaitMs;
        if (ioctl(m_fd, CEC_RECEIVE, &message) == 0) {
            // The kernel sets `len`; a larger value would read beyond the array.
            const std::size_t size = std::min<std::size_t>(message.len, sizeof message.msg);
            m_message(std::vector<std::uint8_t>(message.msg, message.msg + size));
        } else if (errno != ETIMEDOUT && errno != EINTR) {
            // The adapter was unplugged, for example. Sending reports its own errors.
            kLog.Log(1, "{}, nothing more is received", Reason("CEC_RECEIVE"));
            return;
        }
        Queue();
    }

    int m_fd;
    AsyncCallback<std::vector<std::uint8_t>> m_message;
    std::shared_ptr<NotifyTargetTaskIF> m_task;
};

std::unique_ptr<KernelCecBus> KernelCecBus::Open(const std::string& device,
                                                 NotifyTargetTaskIF* task, OnMessage message,
                                                 std::string& why)
{
    const int sending = open(device.c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC);
    if (sending < 0) {
        why = Reason("open");
        return nullptr;
    }
    std::unique_ptr<KernelCecBus> bus(new KernelCecBus(sending));
    if (!bus->Claim(why)) {
        return nullptr;
    }
    // Blocking, unlike the descriptor for sending: CEC_RECEIVE waits only on a blocking one.
    const int receiving = open(device.c_str(), O_RDWR | O_CLOEXEC);
    if (receiving < 0) {
        why = Reason("open");
        return nullptr;
    }
    bus->m_receiver = std::make_unique<Receiver>(receiving, task, std::move(message));
    // Only a follower receives the messages of other devices.
    std::uint32_t mode = CEC_MODE_NO_INITIATOR | CEC_MODE_FOLLOWER;
    if (ioctl(receiving, CEC_S_MODE, &mode) != 0) {
        why = Reason("CEC_S_MODE");
        return nullptr;
    }
    bus->m_receiver->Queue();
    return bus;
}

KernelCecBus::KernelCecBus(int fd) : m_fd(fd) {}

KernelCecBus::~KernelCecBus()
{
    m_receiver.reset();
    close(m_fd);
}

/// Claims the logical address of an audio system, unless the adapter has a fixed address.
bool KernelCecBus::Claim(std::string& why)
{
    cec_caps caps{};
    if (ioctl(m_fd, CEC_ADAP_G_CAPS, &caps) != 0) {
        why = Reason("CEC_ADAP_G_CAPS");
        return false;
    }
    cec_log_addrs addresses{};
    if ((caps.capabilities & CEC_CAP_LOG_ADDRS) != 0) {
        cec_log_addrs none{};
        addresses.cec_version = CEC_OP_CEC_VERSION_1_4;
        addresses.num_log_addrs = 1;
        addresses.vendor_id = CEC_VENDOR_ID_NONE;
        addresses.primary_device_type[0] = CEC_OP_PRIM_DEVTYPE_AUDIOSYSTEM;
        addresses.log_addr_type[0] = CEC_LOG_ADDR_TYPE_AUDIOSYSTEM;
        addresses.all_device_types[0] = CEC_OP_ALL_DEVTYPE_AUDIOSYSTEM;
        std::strncpy(addresses.osd_name, "Orlu", sizeof addresses.osd_name - 1);
        // The kernel refuses new addresses while old ones are set. There may be none to clear, so a
        // failure is ignored.
        ioctl(m_fd, CEC_ADAP_S_LOG_ADDRS, &none);
        if (ioctl(m_fd, CEC_ADAP_S_LOG_ADDRS, &addresses) != 0) {
            why = Reason("CEC_ADAP_S_LOG_ADDRS");
            return false;
        }
    } else if (ioctl(m_fd, CEC_ADAP_G_LOG_ADDRS, &addresses) != 0) {
        why = Reason("CEC_ADAP_G_LOG_ADDRS");
        return false;
    }
    return true;
}

void KernelCecBus::SendUserControl(std::uint8_t userControl, bool pressed)
{
    // The kernel claims the address in the background and anew after the cable was unplugged, so
    // the address is read for each message.
    cec_log_addrs addresses{};
    const bool claimed =
        ioctl(m_fd, CEC_ADAP_G_LOG_ADDRS, &addresses) == 0 && addresses.log_addr_mask != 0;
    const std::uint8_t from =
        claimed ? addresses.log_addr[0] : std::uint8_t{CEC_LOG_ADDR_UNREGISTERED};
    cec_msg message{};
    cec_msg_init(&message, from, CEC_LOG_ADDR_TV);
    message.msg[1] = pressed ? CEC_MSG_USER_CONTROL_PRESSED : CEC_MSG_USER_CONTROL_RELEASED;
    message.len = 2;
    if (pressed) {
        message.msg[message.len++] = userControl;
    }
    if (ioctl(m_fd, CEC_TRANSMIT, &message) != 0) {
        kLog.Log(2, "User control 0x{:02x} is not sent: {}", userControl, Reason("CEC_TRANSMIT"));
    }
}

}  // namespace Lpm
