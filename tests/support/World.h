// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <memory>
#include <string>

#include "core/House.h"
#include "support/Effects.h"
#include "support/ScriptedLpm.h"
#include "support/ScriptedQsp.h"
#include "support/TemporaryRoot.h"
#include "support/VirtualRuntime.h"

/// The whole service under virtual time: its own house, a root folder of its own, and in the place
/// of each peer one that does as the test says. What happens is recorded in `effects`.
class World {
public:
    World();
    ~World();
    World(const World&) = delete;
    World& operator=(const World&) = delete;

    /// Starts the service, as `main` does, and lets it and the LPM service find each other.
    void Start();

    TemporaryRoot root;
    VirtualRuntime runtime;
    Effects effects;
    ScriptedLpm lpm;
    ScriptedQsp qsp;
    TrellanService::House house;

    /// Lines of the service's log since the last call, "<level> <logger>: <text>" each.
    std::string TakeLog();

private:
    static void Collect(int level, std::string_view logger, std::string_view text);
};
