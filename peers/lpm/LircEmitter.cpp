// SPDX-License-Identifier: Apache-2.0

#include "lpm/LircEmitter.h"

#include <fcntl.h>
#include <linux/lirc.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "orlu/DPrint.h"

namespace Lpm {

namespace {

constexpr DPrint kLog("LircEmitter");
constexpr std::uint32_t kDutyCyclePercent = 33;
/// More frames than this would be sent long after their key was released.
constexpr unsigned kMaximumWaiting = 8;

}  // namespace

std::unique_ptr<LircEmitter> LircEmitter::Open(const std::string& device, std::string& why)
{
    const int fd = open(device.c_str(), O_RDWR | O_CLOEXEC);
    if (fd < 0) {
        why = std::strerror(errno);
        return nullptr;
    }
    std::unique_ptr<LircEmitter> emitter(new LircEmitter(fd));
    std::uint32_t features = 0;
    std::uint32_t mode = LIRC_MODE_PULSE;
    if (ioctl(fd, LIRC_GET_FEATURES, &features) != 0 || (features & LIRC_CAN_SEND_PULSE) == 0) {
        why = "it cannot send pulses";
        return nullptr;
    }
    if (ioctl(fd, LIRC_SET_SEND_MODE, &mode) != 0) {
        why = std::strerror(errno);
        return nullptr;
    }
    std::uint32_t dutyCycle = kDutyCyclePercent;
    if ((features & LIRC_CAN_SET_SEND_DUTY_CYCLE) != 0 &&
        ioctl(fd, LIRC_SET_SEND_DUTY_CYCLE, &dutyCycle) != 0) {
        kLog.Log(2, "The duty cycle is not set: {}", std::strerror(errno));
    }
    return emitter;
}

LircEmitter::LircEmitter(int fd) : m_fd(fd), m_task(IL::CreateTask("LpmLircEmitter", "")) {}

LircEmitter::~LircEmitter()
{
    m_task->Stop();
    m_task->Queue()->Join();
    close(m_fd);
}

void LircEmitter::HandleFrame(const InfraredFrame& frame)
{
    if (m_waiting >= kMaximumWaiting) {
        kLog.Log(2, "A frame is dropped: {} still wait", m_waiting.load());
        return;
    }
    // The kernel accepts only an odd number of durations. The last space, which it does not send,
    // passes until the blaster hands over the next frame.
    const std::size_t size = frame.durationsUs.size() - (frame.durationsUs.size() % 2 == 0 ? 1 : 0);
    std::vector<std::uint32_t> durations(
        frame.durationsUs.begin(), frame.durationsUs.begin() + static_cast<std::ptrdiff_t>(size));
    ++m_waiting;
    m_task->QueueNotificationNonBlocking(
        [this, carrierHz = frame.carrierHz, durations = std::move(durations)] {
            Write(carrierHz, durations);
            --m_waiting;
        });
}

void LircEmitter::Write(std::uint32_t carrierHz, const std::vector<std::uint32_t>& durations)
{
    std::uint32_t carrier = carrierHz;
    // The ioctl returns the carrier on success, and fails with ENOTTY where the carrier is fixed.
    if (carrier != m_carrierHz && ioctl(m_fd, LIRC_SET_SEND_CARRIER, &carrier) < 0 &&
        errno != ENOTTY) {
        kLog.Log(2, "The carrier of {} Hz is not set: {}", carrierHz, std::strerror(errno));
    }
    // Also after a failure, so that a held key logs it once and not with every frame.
    m_carrierHz = carrierHz;
    const std::size_t bytes = durations.size() * sizeof durations[0];
    const ssize_t written = write(m_fd, durations.data(), bytes);
    if (written != static_cast<ssize_t>(bytes)) {
        kLog.Log(1, "A frame is not sent: {}", written < 0 ? std::strerror(errno) : "cut short");
    }
}

}  // namespace Lpm
