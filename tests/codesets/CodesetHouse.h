// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "codesets/Trellan_ServiceCodesetHandler.h"
#include "orlu/DPrint.h"
#include "support/TemporaryRoot.h"

inline constexpr const char* kStorePath = "/mnt/nv/product-persistence/TRSCodesetConfig.json";
inline constexpr const char* kWhiteListPath = "/opt/Orlu/etc/UEI/WhiteList.json";

/// A code set handler with a root folder and a log of its own, and a server that does as told.
class CodesetHouse : public testing::Test, public TrellanService::CodesetServerIF {
protected:
    CodesetHouse()
    {
        s_log.clear();
        DPrint::SetSink([](int level, std::string_view, std::string_view text) {
            s_log += std::to_string(level) + " " + std::string(text) + "\n";
        });
        Restart();
    }
    ~CodesetHouse() override { DPrint::SetSink(nullptr); }

    /// The state in memory is gone, the files stay.
    void Restart()
    {
        handler = std::make_unique<TrellanService::Trellan_ServiceCodesetHandler>(*this);
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

    static std::string TakeLog() { return std::exchange(s_log, {}); }

    bool IsCloudConnected() override { return cloud; }
    void NotifyBlasterSyncComplete(bool done) override { notified += done ? "done;" : "begun;"; }

    TemporaryRoot root;
    bool cloud = false;
    std::string notified;
    std::unique_ptr<TrellanService::Trellan_ServiceCodesetHandler> handler;

private:
    static inline std::string s_log;
};
