// SPDX-License-Identifier: Apache-2.0

#include "simulation/SimulatedLpm.h"

#include <stdexcept>

#include "lpm/CodesetFolder.h"

namespace Simulation {

SimulatedLpm::SimulatedLpm(VirtualRuntime& runtime, BlastChecker& checker)
    : m_runtime(runtime),
      m_checker(checker),
      m_recorder([&runtime] { return std::chrono::microseconds(runtime.Now()); },
                 [this](std::string_view line) {
                     m_checker.ReadLine(line);
                     return true;
                 })
{
    Return();
}

SimulatedLpm::~SimulatedLpm()
{
    Leave();
}

void SimulatedLpm::Return()
{
    if (IsThere()) {
        return;
    }
    m_task = IL::CreateTask("LpmService", "");
    m_blaster = std::make_unique<Lpm::Blaster>(
        m_task.get(), [this](Lpm::DeviceNumber device, std::uint8_t key, bool on) {
            m_emissions += on ? 1 : 0;
            m_recorder.Emission(device, key, on);
        });
    Lpm::CecBusIF& bus = *this;
    m_cec = std::make_unique<Lpm::CecRemote>(bus, m_task.get());
    m_server =
        std::make_unique<Lpm::LpmServer>(m_task.get(), *m_blaster, m_script, *m_cec, &m_recorder);
    IL::BreakThread([this] { m_server->Start(); }, m_task.get());
}

void SimulatedLpm::Leave()
{
    if (!IsThere()) {
        return;
    }
    Stall(false);
    m_troubled = true;
    m_task->Stop();
    m_blaster->Stop();
    m_server.reset();
    m_cec.reset();
    m_blaster.reset();
}

void SimulatedLpm::LoadCodesets(const std::string& folder)
{
    std::string why;
    if (!Lpm::LoadCodesets(folder, *m_blaster, why)) {
        throw std::runtime_error(why);
    }
}

std::string SimulatedLpm::SocketPath() const
{
    return IPCDirectory::Get().Lookup("LpmService").Path();
}

void SimulatedLpm::Stall(bool stalled)
{
    if (stalled == m_stalled || !IsThere()) {
        return;
    }
    m_stalled = stalled;
    m_troubled = true;
    m_checker.Disregard(stalled);
    for (const auto& socket : m_runtime.Net().Served(SocketPath())) {
        socket->Stall(stalled);
    }
}

void SimulatedLpm::CutLinksAfter(std::size_t bytes)
{
    m_troubled = true;
    for (const auto& socket : m_runtime.Net().Served(SocketPath())) {
        socket->CutAfter(bytes);
    }
}

void SimulatedLpm::Follow(const std::string& script)
{
    std::string why;
    m_scripted = script.find("command") != std::string::npos;
    m_troubled = m_troubled || m_scripted;
    if (!m_script.Load(script, why)) {
        throw std::runtime_error(why);
    }
}

void SimulatedLpm::Forget(Lpm::DeviceNumber device)
{
    std::string erase("\x00\x03\x0C", 3);
    erase += {static_cast<char>(device >> 8), static_cast<char>(device)};
    m_blaster->Execute(Lpm::AsBytes(erase), 0);
}

bool SimulatedLpm::Holds(Lpm::DeviceNumber device)
{
    const std::string list("\x00\x01\x11", 3);
    const std::string reply = m_blaster->Execute(Lpm::AsBytes(list), 0);
    for (std::size_t at = 3; at + 1 < reply.size(); at += 2) {
        if (static_cast<std::uint8_t>(reply[at]) == device >> 8 &&
            static_cast<std::uint8_t>(reply[at + 1]) == (device & 0xFF)) {
            return true;
        }
    }
    return false;
}

}  // namespace Simulation
