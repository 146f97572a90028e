// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <sys/types.h>

#include "orlu/Runtime.h"

namespace Orlu {

/// True if a process of user `peer` may connect to one of user `own`: the same user, or root.
bool MayTalk(uid_t own, uid_t peer);

/// Unix stream sockets on the queues of `AsioTaskQueue`. The socket's folder is made with mode
/// 0700, the socket has 0600; a socket file without a listener is replaced.
class UnixTransport final : public TransportIF {
public:
    std::unique_ptr<TransportHandle> Listen(const std::string& path, const TaskQueuePtr& queue,
                                            std::function<void(SocketPtr)> accepted) override;

    std::unique_ptr<TransportHandle> Connect(const std::string& path, const TaskQueuePtr& queue,
                                             std::function<void(SocketPtr)> done) override;
};

}  // namespace Orlu
