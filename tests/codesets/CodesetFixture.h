// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "codesets/Trellan_ServiceCodesetHandler.h"
#include "support/LogCapture.h"
#include "support/TemporaryRoot.h"
#include "support/VirtualRuntime.h"

inline constexpr const char* kStorePath = "/mnt/nv/product-persistence/TRSCodesetConfig.json";
inline constexpr const char* kWhiteListPath = "/opt/Orlu/etc/UEI/WhiteList.json";

/// A code set handler with a root folder and a log of its own, a scripted server, and an engine and
/// a blaster that record each step of a sync and wait until the test answers it.
class CodesetFixture : public testing::Test,
                       public TrellanService::CodesetServerIF,
                       public TrellanService::BlasterSyncIF {
protected:
    CodesetFixture() { Restart(); }
    ~CodesetFixture() override { task->Stop(); }

    /// Constructs the handler again: only the files stay.
    void Restart()
    {
        handler = std::make_unique<TrellanService::Trellan_ServiceCodesetHandler>(*this, *this);
    }

    static TrellanServiceMessages::SrcCiCodeMessage_t List(const std::vector<std::string>& names)
    {
        TrellanServiceMessages::SrcCiCodeMessage_t list;
        for (const auto& name : names) {
            list.add_cicode(name);
        }
        return list;
    }

    /// "T2051 803 1800000 abc safe 1b02;" for each entry: number, bits, checksum, keys.
    std::string Map() const
    {
        std::string text;
        for (const auto& [name, entry] : handler->GetCodesets()) {
            text += fmt::format("{} {:x} {:x} {} {} ", name, entry.devNum, entry.ambiguousKeyBitMap,
                                entry.checksum, entry.safeToBlast ? "safe" : "unsafe");
            for (const auto key : entry.ueiKeys) {
                text += fmt::format("{:02x}", key);
            }
            text += ";";
        }
        return text;
    }

    std::string TakeLog() { return capture.Take(); }

    bool IsCloudConnected() override { return cloud; }
    void NotifyBlasterSyncComplete(bool done) override { notified += done ? "done;" : "begun;"; }

    bool TestConnection() override { return reachable; }
    void LoadCodeset(const std::string& name,
                     const Callback<LpmServiceMessages::BulkTransferResponse>& callback,
                     std::uint32_t kind) override
    {
        steps += fmt::format("load {} {};", name, kind);
        loaded = callback;
    }
    void ResetBlaster(const AsyncCallback<std::string>& callback) override
    {
        steps += "reset;";
        replied = callback;
    }
    void GetBlasterKeyMap(const std::string& name,
                          const AsyncCallback<std::string>& callback) override
    {
        steps += "keymap " + name + ";";
        replied = callback;
    }
    void EndBurst() override { steps += "end burst;"; }
    NotifyTargetTaskIF* BlasterTask() override { return task.get(); }

    /// Answers the current step in the blaster's place.
    void Reply(const std::string& bytes)
    {
        std::exchange(replied, {})(bytes);
        runtime.RunUntilIdle();
    }
    /// Answers the current load in the engine's place.
    void Loaded(LpmServiceMessages::BulkTransferResult result)
    {
        LpmServiceMessages::BulkTransferResponse response;
        response.set_result(result);
        std::exchange(loaded, {})(response);
        runtime.RunUntilIdle();
    }
    std::string TakeSteps() { return std::exchange(steps, {}); }

    LogCapture capture;
    TemporaryRoot root;
    VirtualRuntime runtime;
    std::shared_ptr<NotifyTargetTaskIF> task = IL::CreateTask("server", "");
    bool reachable = false;
    std::string steps;
    AsyncCallback<std::string> replied;
    Callback<LpmServiceMessages::BulkTransferResponse> loaded;
    bool cloud = false;
    std::string notified;
    std::unique_ptr<TrellanService::Trellan_ServiceCodesetHandler> handler;
};
