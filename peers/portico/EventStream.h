// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "portico/Listener.h"

#include <memory>
#include <string>
#include <vector>

namespace PorticoApi {

/// The consumers of `GET /events`. Each gets every notification from its request on, as
///
///     data: {"path":"/network/status","body":{"isPrimaryUp":true}}
///
/// One that does not read is cut off behind `Limits::kEventQueueBytes`.
class EventStreams {
public:
    /// Answers the request that came by this connection and keeps it.
    void Add(Socket socket, Share share);

    /// `json` on one line; empty: the resource is not ready, and the body is null.
    void Tell(const std::string& path, const std::string& json);

private:
    class Stream;
    std::vector<std::weak_ptr<Stream>> m_streams;
};

}  // namespace PorticoApi
