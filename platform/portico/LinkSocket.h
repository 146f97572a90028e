// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "orlu/AsioTaskQueue.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

namespace Portico {

/// What a link's socket reports, each on the thread of its loop.
struct LinkEvents {
    std::function<void()> up;
    std::function<void(std::string_view text)> text;
    /// Once, also instead of `up`; nothing comes after it. Not called for `Close`.
    std::function<void(const std::string& why)> down;
};

/// One attempt at a WebSocket to the local API, and the connection that comes of it. Used on the
/// thread of its loop only.
class LinkSocketIF {
public:
    virtual ~LinkSocketIF() = default;

    /// One text message; waits for those before it. Beyond `Limits::kSendQueueBytes` the peer has
    /// stopped reading, and the link goes down.
    virtual void Send(std::string text) = 0;

    /// From here on no event comes.
    virtual void Close() = 0;
};

/// Begins an attempt at this port of the loopback address; its events come later.
std::shared_ptr<LinkSocketIF> OpenLinkSocket(Orlu::AsioTaskQueue& loop, std::uint16_t port,
                                             LinkEvents events);

}  // namespace Portico
