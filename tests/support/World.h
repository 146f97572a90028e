// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <memory>
#include <string>

#include "core/CompositionRoot.h"
#include "support/Effects.h"
#include "support/LogCapture.h"
#include "support/ScriptedLpm.h"
#include "support/ScriptedPortico.h"
#include "support/ScriptedQsp.h"
#include "support/TemporaryRoot.h"
#include "support/VirtualRuntime.h"

/// The whole service under virtual time, with instances and a root folder of its own, and a
/// scripted peer in place of each real one. `effects` records what happens.
class World {
public:
    World();
    ~World();
    World(const World&) = delete;
    World& operator=(const World&) = delete;

    /// Starts the service as `main` does and waits until it is connected to the LPM service.
    void Start();

    /// Makes the product's resources ready: one with the serial number A1234, its network up and a
    /// staging folder at `kStaging`. That starts the engine; a second later the cloud counts as
    /// connected.
    void PutProductValues();
    static constexpr const char* kStaging = "/mnt/nv/payload";

    /// Lines of the service's log since the last call, "<level> <logger>: <text>" each.
    std::string TakeLog() { return capture.Take(); }

    LogCapture capture{nullptr, LogCapture::Names::With};
    TemporaryRoot root;
    VirtualRuntime runtime;
    Effects effects;
    ScriptedLpm lpm;
    ScriptedQsp qsp;
    ScriptedPortico portico;
    TrellanService::CompositionRoot service;
};
