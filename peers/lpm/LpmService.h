// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "devices/VirtualDevices.h"
#include "lpm/Blaster.h"
#include "lpm/CecBusIF.h"
#include "lpm/CecRemote.h"
#include "lpm/DeviceRoomServer.h"
#include "lpm/InputLines.h"
#include "lpm/LircEmitter.h"
#include "lpm/LpmServer.h"
#include "lpm/Options.h"
#include "lpm/Recorder.h"
#include "lpm/ReplyScript.h"

namespace Lpm {

/// The program without its command line. It is constructed, used and destroyed on one task.
class LpmService {
public:
    /// Opens and reads the files and devices of the options. Empty, with one line in `why`, if one
    /// of them cannot be opened or is invalid.
    static std::unique_ptr<LpmService> Create(NotifyTargetTaskIF* task, const Options& options,
                                              std::string& why);

    /// Ends the keys that are being sent by infrared and on the CEC bus.
    ~LpmService();
    LpmService(const LpmService&) = delete;
    LpmService& operator=(const LpmService&) = delete;

    /// Begins to listen. False, logged, if that fails.
    bool Start();

    /// One line of standard input.
    void HandleLine(const std::string& line);

private:
    class SimulatedCecBus;

    explicit LpmService(NotifyTargetTaskIF* task);

    bool OpenFiles(const Options& options, std::string& why);
    bool OpenDevices(const std::string& path, std::string& why);
    bool OpenDevices(const Options& options, std::string& why);
    void HandleSending(DeviceNumber device, std::uint8_t key, bool on);
    void HandleDeviceLine(const std::string& line);

    NotifyTargetTaskIF* m_task;
    std::unique_ptr<Recorder> m_recorder;
    std::unique_ptr<VirtualDevices> m_devices;
    std::unique_ptr<DeviceRoomServer> m_deviceServer;
    std::unique_ptr<LircEmitter> m_emitter;
    std::unique_ptr<CecBusIF> m_cecBus;
    ReplyScript m_script;
    Blaster m_blaster;
    std::unique_ptr<CecRemote> m_cec;
    std::unique_ptr<LpmServer> m_server;
    std::unique_ptr<InputLines> m_input;
};

}  // namespace Lpm
