// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <memory>
#include <string>
#include <utility>

#include <gtest/gtest.h>

#include "blaster/Trellan_ServiceBlasterProxy.h"
#include "codesets/Trellan_ServiceCodesetHandler.h"
#include "orlu/DPrint.h"
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
                   private BlasterSyncIF,
                   private UEIResponsesIF {
protected:
    UEIFixture()
    {
        s_log.clear();
        DPrint::SetSink([](int level, std::string_view logger, std::string_view text) {
            if (logger == "UEIInterface") {
                s_log += std::to_string(level) + " " + std::string(text) + "\n";
            }
        });
    }
    ~UEIFixture() override { DPrint::SetSink(nullptr); }

    int Init(const std::string& country = "", const std::string& serialNumber = "")
    {
        DeviceManagerPb::DeviceInfo deviceInfo;
        deviceInfo.set_countrycode(country);
        deviceInfo.set_serialnumber(serialNumber);
        return engine.Init(task.get(), deviceInfo);
    }
    /// On the engine's task, until nothing is left to do; all that came of it.
    std::string Run(std::function<void()> work)
    {
        IL::BreakThread(std::move(work), task.get());
        runtime.RunUntilIdle();
        return effects.Take();
    }
    static std::string TakeLog() { return std::exchange(s_log, {}); }

    VirtualRuntime runtime;
    TemporaryRoot root;
    Effects effects{runtime};
    ScriptedQsp qsp{effects};
    ScriptedLpm lpm{effects};
    std::shared_ptr<NotifyTargetTaskIF> task = IL::CreateTask("server", "");
    Trellan_ServiceCodesetHandler handler{*this, *this};
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
    bool TestConnection() override { return false; }
    void LoadCodeset(const std::string&, const Callback<LpmServiceMessages::BulkTransferResponse>&,
                     std::uint32_t) override
    {
    }
    void ResetBlaster(const AsyncCallback<std::string>&) override {}
    void GetBlasterKeyMap(const std::string&, const AsyncCallback<std::string>&) override {}
    NotifyTargetTaskIF* BlasterTask() override { return task.get(); }
    void FillOSMControlResp(TrellanServiceMessages::OSMControlResp_t& response) override
    {
        engine.FillOSMControlResp(response);
    }
    void FillDirectEntryResp(TrellanServiceMessages::DirectEntryResp_t& response) override
    {
        engine.FillDirectEntryResp(response);
    }

    static inline std::string s_log;
};

}  // namespace TrellanService::Tests
