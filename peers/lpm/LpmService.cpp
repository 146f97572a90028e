// SPDX-License-Identifier: Apache-2.0

#include "lpm/LpmService.h"

#include <cstdio>
#include <utility>
#include <vector>

#include "lpm/CodesetFolder.h"
#include "lpm/FileInput.h"
#include "lpm/KernelCecBus.h"
#include "orlu/DPrint.h"

namespace Lpm {

namespace {

constexpr DPrint kLog("LpmService");

/// Writes the line with one call, so that lines of different threads do not mix.
void PrintLine(std::string line)
{
    line += '\n';
    if (std::fwrite(line.data(), 1, line.size(), stdout) != line.size() ||
        std::fflush(stdout) != 0) {
        kLog.Log(2, "Standard output takes no more");
    }
}

/// Converts a message of the bus, header first. `addr` is the initiator, the header's high half.
LpmServiceMessages::IpcCecMessage_t CecMessage(const std::vector<std::uint8_t>& bytes)
{
    LpmServiceMessages::IpcCecMessage_t message;
    message.set_addr(bytes.empty() ? 0U : static_cast<std::uint32_t>(bytes[0] >> 4));
    for (const std::uint8_t byte : bytes) {
        message.add_data(byte);
    }
    message.set_length(static_cast<std::uint32_t>(bytes.size()));
    return message;
}

bool Fail(const std::string& what, std::string& why)
{
    why = what + ": " + why;
    return false;
}

}  // namespace

/// The CEC bus of the virtual devices.
class LpmService::SimulatedCecBus : public CecBusIF {
public:
    explicit SimulatedCecBus(LpmService& service) : m_service(service) {}

    void SendUserControl(std::uint8_t userControl, bool pressed) override
    {
        // The bus exists before OpenFiles loads the devices, and without --devices there are none.
        if (m_service.m_devices) {
            m_service.m_devices->ReceiveCecKey(userControl, pressed);
        }
    }

private:
    LpmService& m_service;
};

LpmService::LpmService(NotifyTargetTaskIF* task)
    : m_task(task),
      m_cecBus(std::make_unique<SimulatedCecBus>(*this)),
      m_blaster(task, [this](DeviceNumber device, std::uint8_t key, bool on) {
          HandleSending(device, key, on);
      })
{
}

std::unique_ptr<LpmService> LpmService::Create(NotifyTargetTaskIF* task, const Options& options,
                                               std::string& why)
{
    std::unique_ptr<LpmService> service(new LpmService(task));
    if (!service->OpenFiles(options, why) || !service->OpenDevices(options, why)) {
        return nullptr;
    }
    service->m_cec = std::make_unique<CecRemote>(*service->m_cecBus, task);
    service->m_server = std::make_unique<LpmServer>(task, service->m_blaster, service->m_script,
                                                    *service->m_cec, service->m_recorder.get());
    service->m_input = std::make_unique<InputLines>(*service->m_server, service->m_script);
    return service;
}

LpmService::~LpmService()
{
    // No client can end its keys any more. The record gets the end, the bus the release.
    m_blaster.Stop();
    if (m_cec) {
        m_cec->Release();
    }
}

bool LpmService::OpenFiles(const Options& options, std::string& why)
{
    if (!options.record.empty() && !(m_recorder = Recorder::Open(options.record, why))) {
        return Fail(options.record, why);
    }
    if (!options.codesets.empty() && !LoadCodesets(options.codesets, m_blaster, why)) {
        return Fail(options.codesets, why);
    }
    if (!options.script.empty()) {
        const auto text = ReadInputFile(options.script, why);
        if (!text || !m_script.Load(*text, why)) {
            return Fail(options.script, why);
        }
    }
    return options.devices.empty() || OpenDevices(options.devices, why) ||
           Fail(options.devices, why);
}

bool LpmService::OpenDevices(const std::string& path, std::string& why)
{
    const auto text = ReadInputFile(path, why);
    if (!text) {
        return false;
    }
    m_devices = VirtualDevices::Load(
        *text, [this](const std::string& line) { HandleDeviceLine(line); }, why);
    if (!m_devices) {
        return false;
    }
    m_blaster.AddSink(m_devices.get());
    m_deviceServer = std::make_unique<DeviceRoomServer>(
        m_task, [devices = m_devices.get()] { return devices->StateAsJson(); });
    return true;
}

bool LpmService::OpenDevices(const Options& options, std::string& why)
{
    if (!options.lirc.empty()) {
        if (!(m_emitter = LircEmitter::Open(options.lirc, why))) {
            return Fail(options.lirc, why);
        }
        m_blaster.AddSink(m_emitter.get());
    }
    if (!options.cec.empty()) {
        m_cecBus = KernelCecBus::Open(
            options.cec, m_task,
            [this](const std::vector<std::uint8_t>& bytes) {
                m_server->SendToAll(LpmServiceMessages::IPC_CEC_MSG, CecMessage(bytes));
            },
            why);
        if (!m_cecBus) {
            return Fail(options.cec, why);
        }
    }
    return true;
}

bool LpmService::Start()
{
    return m_server->Start() && (!m_deviceServer || m_deviceServer->Start());
}

void LpmService::HandleLine(const std::string& line)
{
    m_input->HandleLine(line);
}

void LpmService::HandleSending(DeviceNumber device, std::uint8_t key, bool on)
{
    if (m_recorder) {
        m_recorder->Emission(device, key, on);
    }
}

void LpmService::HandleDeviceLine(const std::string& line)
{
    PrintLine(line);
    if (m_deviceServer) {
        m_deviceServer->SendLine(line);
    }
}

}  // namespace Lpm
