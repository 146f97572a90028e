// SPDX-License-Identifier: Apache-2.0

#pragma once

namespace TrellanService {

/// What the code set handler asks the server task and reports to it. Called on that task.
class CodesetServerIF {
public:
    virtual ~CodesetServerIF() = default;

    virtual bool IsCloudConnected() = 0;

    /// For the client: a sync has begun (false) or has ended (true).
    virtual void NotifyBlasterSyncComplete(bool done) = 0;
};

}  // namespace TrellanService
