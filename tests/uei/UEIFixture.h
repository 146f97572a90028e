// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <memory>
#include <string>
#include <utility>

#include <gtest/gtest.h>

#include "blaster/Trellan_ServiceBlasterProxy.h"
#include "codesets/Trellan_ServiceCodesetHandler.h"
#include "support/LogCapture.h"
#include "support/NoSync.h"
#include "support/ScriptedLpm.h"
#include "support/ScriptedQsp.h"
#include "support/TemporaryRoot.h"
#include "support/VirtualRuntime.h"
#include "uei/UEIInterface.h"

namespace TrellanService::Tests {

/// The engine between a scripted library, a code set handler and a proxy with an LPM side. No sync
/// runs.
class UEIFixture : public testing::Test,
                   private UEINeighboursIF,
                   private CodesetServerIF,
                   private UEIResponsesIF {
protected:
    int Init(const std::string& country = "", const std::string& serialNumber = "")
    {
        DeviceManagerPb::DeviceInfo deviceInfo;
        deviceInfo.set_countrycode(country);
        deviceInfo.set_serialnumber(serialNumber);
        return engine.Init(task.get(), deviceInfo);
    }
    /// Runs work on the engine's task until all tasks are idle. Returns all effects.
    std::string Run(std::function<void()> work)
    {
        IL::BreakThread(std::move(work), task.get());
        runtime.RunUntilIdle();
        return effects.Take();
    }
    std::string TakeLog() { return capture.Take(); }

    LogCapture capture{[](std::string_view logger) {
        return logger == "UEIInterface";
    }};
    VirtualRuntime runtime;
    TemporaryRoot root;
    Effects effects{runtime};
    ScriptedQsp qsp{effects};
    ScriptedLpm lpm{effects};
    std::shared_ptr<NotifyTargetTaskIF> task = IL::CreateTask("server", "");
    NoSync sync;
    Trellan_ServiceCodesetHandler handler{*this, sync};
    Trellan_ServiceBlasterProxy proxy{task.get(), *this};
    UEIInterface engine{*this};
    std::string staging;

private:
    Trellan_ServiceCodesetHandler& CodesetHandler() override { return handler; }
    Trellan_ServiceBlasterProxy& BlasterProxy() override { return proxy; }
    std::string StagingDirectory() override { return staging; }
    std::string BrandListFileName() override { return "brandList0"; }
    void EndBurst() override { effects.Add("end burst"); }
    bool IsCloudConnected() override { return false; }
    void NotifyBlasterSyncComplete(bool) override {}
    void FillOSMControlResp(TrellanServiceMessages::OSMControlResp_t& response) override
    {
        engine.FillOSMControlResp(response);
    }
    void FillDirectEntryResp(TrellanServiceMessages::DirectEntryResp_t& response) override
    {
        engine.FillDirectEntryResp(response);
    }
};

}  // namespace TrellanService::Tests
