// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "portico/Listener.h"

#include <memory>
#include <string>
#include <vector>

namespace PorticoApi {

/// The consumers of `GET /events`. Each gets all notifications after its request, in the form
///
///     data: {"path":"/network/status","body":{"isPrimaryUp":true}}
///
/// A consumer that does not read is disconnected above `Limits::kEventQueueBytes`.
class EventStreams {
public:
    /// Answers the request of this connection and keeps the connection.
    void Add(Socket socket, Share share);

    /// `json` is one line. Empty means that the resource is not ready; the body is then null.
    void Notify(const std::string& path, const std::string& json);

private:
    class Stream;
    std::vector<std::weak_ptr<Stream>> m_streams;
};

}  // namespace PorticoApi
