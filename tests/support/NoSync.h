// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "codesets/BlasterSyncIF.h"

/// Stands for a missing cloud and blaster: no sync starts, and a started one does not continue.
class NoSync : public TrellanService::BlasterSyncIF {
public:
    bool TestConnection() override { return false; }
    void LoadCodeset(const std::string&, const Callback<LpmServiceMessages::BulkTransferResponse>&,
                     std::uint32_t) override
    {
    }
    void ResetBlaster(const AsyncCallback<std::string>&) override {}
    void GetBlasterKeyMap(const std::string&, const AsyncCallback<std::string>&) override {}
    void EndBurst() override {}
    NotifyTargetTaskIF* BlasterTask() override { return task; }

    NotifyTargetTaskIF* task = nullptr;
};
