// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <memory>
#include <string>

#include <gtest/gtest.h>

#include "blaster/Trellan_ServiceBlasterProxy.h"
#include "codesets/Trellan_ServiceCodesetHandler.h"
#include "keys/Trellan_ServiceKeyHandler.h"
#include "orlu/MfgData.h"
#include "support/LogCapture.h"
#include "support/NoSync.h"
#include "support/ScriptedLpm.h"
#include "support/TemporaryRoot.h"
#include "support/VirtualRuntime.h"

/// The key handler over the real proxy and a scripted LPM service, under virtual time. Code set
/// T2051 is known and has no key; keys are sent by infrared. `effects` records what happens.
class KeyFixture : public testing::Test,
                   public TrellanService::CodesetServerIF,
                   public TrellanService::UEIResponsesIF {
protected:
    KeyFixture() : codesets(*this, sync) { Learn("T2051", ""); }
    ~KeyFixture() override { task->Stop(); }

    /// Constructs the handler for a product with this manufacturing data.
    void Start(const std::string& mfgData = "{}")
    {
        root.Write("/opt/Orlu/etc/MfgData.json", mfgData);
        MfgData::Reload();
        keys = std::make_unique<TrellanService::Trellan_ServiceKeyHandler>(&proxy, codesets,
                                                                           task.get());
        runtime.RunUntilIdle();
        TakeLog();
        effects.Take();
    }

    /// Adds a code set with the keys in a blaster's reply behind its first two bytes.
    void Learn(const std::string& name, const std::string& heldKeys)
    {
        TrellanServiceMessages::SrcCiCodeMessage_t list;
        list.add_cicode(name);
        codesets.cacheCodesets(list);
        codesets.Rewind();
        std::string answer(1, static_cast<char>(heldKeys.size() + 1));
        codesets.CalculateAmbiguousKeyMap(answer + '\0' + heldKeys);
        codesets.SetSendKeyState(TrellanService::SendKeyReady);
    }

    AsyncCallback<std::string> Answer()
    {
        return {
            [this](const std::string& text) { effects.Add("answer '" + Printable(text) + "'"); },
            task.get()};
    }

    void Press(std::uint32_t key, const std::string& codeset = "T2051")
    {
        keys->sendContinuousKey(codeset, key, Answer(), false);
        runtime.RunUntilIdle();
    }
    void Release(const std::string& codeset = "T2051")
    {
        keys->sendEndKey(codeset, Answer(), false);
        runtime.RunUntilIdle();
    }
    void Single(std::uint32_t key, const std::string& codeset = "T2051")
    {
        keys->sendSingleKey(codeset, key, Answer());
        runtime.RunUntilIdle();
    }
    /// The effects of a press and a release at `heldMs`, until nothing more happens.
    std::string Hold(std::uint32_t key, std::uint32_t heldMs)
    {
        Press(key);
        runtime.Advance(heldMs);
        Release();
        runtime.Advance(1000);
        return effects.Take();
    }

    std::string TakeLog() { return capture.Take(); }

    bool IsCloudConnected() override { return false; }
    void NotifyBlasterSyncComplete(bool /*done*/) override {}
    void FillOSMControlResp(TrellanServiceMessages::OSMControlResp_t& /*response*/) override {}
    void FillDirectEntryResp(TrellanServiceMessages::DirectEntryResp_t& /*response*/) override {}

    LogCapture capture{[](std::string_view logger) {
        return logger == "TrellanServiceKeyHandler";
    }};
    TemporaryRoot root;
    VirtualRuntime runtime;
    Effects effects{runtime};
    ScriptedLpm lpm{effects};
    std::shared_ptr<NotifyTargetTaskIF> task = IL::CreateTask("server", "");
    TrellanService::Trellan_ServiceCodesetHandler codesets;
    NoSync sync;
    TrellanService::Trellan_ServiceBlasterProxy proxy{task.get(), *this};
    std::unique_ptr<TrellanService::Trellan_ServiceKeyHandler> keys;

private:
    static std::string Printable(const std::string& text)
    {
        std::string printable;
        for (const char c : text) {
            printable += c >= ' ' ? std::string(1, c) : fmt::format("{:02x}", unsigned(c));
        }
        return printable;
    }
};
