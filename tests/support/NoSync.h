// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "codesets/BlasterSyncIF.h"

/// Neither cloud nor blaster: no sync begins, and one that was begun gets no further.
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
