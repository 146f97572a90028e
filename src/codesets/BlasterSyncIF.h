// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <string>

#include "ProtoBufs/LpmServiceMessages.pb.h"
#include "orlu/Callback.h"
#include "orlu/Task.h"

namespace TrellanService {

/// What a sync asks of the engine and of the blaster. On the server task.
class BlasterSyncIF {
public:
    virtual ~BlasterSyncIF() = default;

    /// Whether the cloud can be reached. Blocks the task while it is tried.
    virtual bool TestConnection() = 0;

    /// Downloads a code set, which blocks, and transfers it to the blaster. `callback` gets the
    /// transfer's result, or `BULK_TRANSFER_ERROR` before the call returns if the download failed.
    virtual void LoadCodeset(const std::string& name,
                             const Callback<LpmServiceMessages::BulkTransferResponse>& callback,
                             std::uint32_t kind) = 0;

    /// Both callbacks get the blaster's reply as raw bytes. The low four bits of the second byte
    /// are the status. A callback whose reply is lost is never called.
    virtual void ResetBlaster(const AsyncCallback<std::string>& callback) = 0;
    virtual void GetBlasterKeyMap(const std::string& name,
                                  const AsyncCallback<std::string>& callback) = 0;

    /// To be called before the task waits for the disk: ends a burst that would otherwise last too
    /// long.
    virtual void EndBurst() = 0;

    /// The task to which a sync binds its callbacks.
    virtual NotifyTargetTaskIF* BlasterTask() = 0;
};

}  // namespace TrellanService
