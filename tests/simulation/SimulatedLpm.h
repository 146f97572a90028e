// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <memory>
#include <string>

#include "lpm/LpmServer.h"
#include "simulation/BlastChecker.h"
#include "support/VirtualRuntime.h"

namespace Simulation {

/// The real LpmService with its blaster, on a task of its own, and the judge who reads its record.
class SimulatedLpm : private Lpm::CecBusIF {
public:
    SimulatedLpm(VirtualRuntime& runtime, BlastChecker& judge);
    ~SimulatedLpm() override;
    SimulatedLpm(const SimulatedLpm&) = delete;
    SimulatedLpm& operator=(const SimulatedLpm&) = delete;

    /// Gone as a killed process, with all that the blaster held; and there again.
    void Leave();
    void Return();
    bool IsThere() const { return m_server != nullptr; }

    /// Has the blaster hold the code sets of a folder.
    void LoadCodesets(const std::string& folder);

    /// Reads nothing, as a process that hangs.
    void Stall(bool stalled);
    /// Every link breaks after some bytes more.
    void CutLinksAfter(std::size_t bytes);
    /// From now on the blaster answers as this script says.
    void Follow(const std::string& script);
    /// Forgets a code set without a word, as no blaster may.
    void Forget(Lpm::DeviceNumber device);

    /// Whether it has been well since the last call of `ForgiveTroubles`.
    bool IsTroubled() const { return m_troubled; }
    void NoteTrouble() { m_troubled = true; }
    void ForgiveTroubles() { m_troubled = m_stalled || m_scripted || !IsThere(); }

    bool Holds(Lpm::DeviceNumber device);
    /// Times that the light went on.
    unsigned Flashes() const { return m_flashes; }

private:
    void SendUserControl(std::uint8_t, bool) override {}
    std::string SocketPath() const;

    VirtualRuntime& m_runtime;
    BlastChecker& m_checker;
    Lpm::Recorder m_recorder;
    Lpm::ReplyScript m_script;
    std::shared_ptr<NotifyTargetTaskIF> m_task;
    std::unique_ptr<Lpm::Blaster> m_blaster;
    std::unique_ptr<Lpm::CecRemote> m_cec;
    std::unique_ptr<Lpm::LpmServer> m_server;
    bool m_stalled = false;
    bool m_scripted = false;
    bool m_troubled = false;
    unsigned m_flashes = 0;
};

}  // namespace Simulation
