// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <memory>
#include <string>

#include "lpm/LpmServer.h"
#include "simulation/BlastChecker.h"
#include "support/VirtualRuntime.h"

namespace Simulation {

/// The real LpmService with its blaster, on a task of its own; the checker reads its record.
class SimulatedLpm : private Lpm::CecBusIF {
public:
    SimulatedLpm(VirtualRuntime& runtime, BlastChecker& checker);
    ~SimulatedLpm() override;
    SimulatedLpm(const SimulatedLpm&) = delete;
    SimulatedLpm& operator=(const SimulatedLpm&) = delete;

    /// Leave ends as a killed process does, and the blaster loses its code sets. Return starts
    /// anew.
    void Leave();
    void Return();
    bool IsThere() const { return m_server != nullptr; }

    /// Loads the code sets of a folder into the blaster.
    void LoadCodesets(const std::string& folder);

    /// `stalled`: reads nothing, as a process that hangs.
    void Stall(bool stalled);
    /// Every connection breaks after `bytes` more bytes.
    void CutLinksAfter(std::size_t bytes);
    /// Replaces the blaster's reply script.
    void Follow(const std::string& script);
    /// Deletes a code set without a reply to any client: a planted fault.
    void Forget(Lpm::DeviceNumber device);

    /// Whether there was any disturbance since the last call of `ForgiveTroubles`.
    bool IsTroubled() const { return m_troubled; }
    void NoteTrouble() { m_troubled = true; }
    void ForgiveTroubles() { m_troubled = m_stalled || m_scripted || !IsThere(); }

    bool Holds(Lpm::DeviceNumber device);
    /// Number of keys that began to be sent.
    unsigned Emissions() const { return m_emissions; }

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
    unsigned m_emissions = 0;
};

}  // namespace Simulation
