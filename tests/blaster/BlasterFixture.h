// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <functional>
#include <memory>
#include <sstream>
#include <string>
#include <utility>

#include <gtest/gtest.h>

#include "orlu/DPrint.h"
#include "orlu/MfgData.h"
#include "support/Effects.h"
#include "support/LogCapture.h"
#include "support/ScriptedLpm.h"
#include "support/VirtualRuntime.h"

namespace TrellanService::Tests {

/// A server task and, once it serves, an LPM side in virtual time, which does not answer loads. All
/// events are one text, in order.
class BlasterFixture : public ::testing::Test {
protected:
    BlasterFixture()
    {
        MfgData::Reload();
        DPrint::SetLevel(4);
        task = IL::CreateTask("server", "");
        lpm.NotePackets();
        lpm.AnswerLoads(std::nullopt);
        Leave();
    }

    ~BlasterFixture() override { DPrint::SetLevel(3); }

    /// Runs work on the server task, until all tasks are idle.
    void Run(std::function<void()> work)
    {
        IL::BreakThread(std::move(work), task.get());
        runtime.RunUntilIdle();
    }

    void Serve()
    {
        lpm.Serve();
        runtime.RunUntilIdle();
    }
    void Leave()
    {
        lpm.Leave();
        runtime.RunUntilIdle();
    }

    /// A callback that records its bytes behind `name`.
    AsyncCallback<std::string> Note(const std::string& name)
    {
        return {
            [this, name](const std::string& bytes) { answers += name + " " + Hex(bytes) + "\n"; },
            task.get()};
    }

    /// The messages that the LPM side has received, without times.
    std::string TakeRecord()
    {
        std::istringstream lines(effects.Take());
        std::string record;
        for (std::string line; std::getline(lines, line);) {
            record += line.substr(line.find("lpm ") + 4) + "\n";
        }
        return record;
    }
    std::string TakeAnswers() { return std::exchange(answers, {}); }
    std::string TakeLog() { return capture.Take(); }

    LogCapture capture{[](std::string_view logger) {
        return logger != "MfgData" && logger != "TrellanServiceCodesetHandler";
    }};
    VirtualRuntime runtime;
    Effects effects{runtime};
    ScriptedLpm lpm{effects};
    std::shared_ptr<NotifyTargetTaskIF> task;
    std::string answers;
};

}  // namespace TrellanService::Tests
