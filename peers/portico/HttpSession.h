// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "portico/ConnectionContext.h"
#include "portico/Listener.h"

namespace PorticoApi {

/// Serves the requests of one connection, or passes the connection on to the link or to the events.
/// A connection that is idle for too long is closed.
void ServeConnection(Socket socket, const Share& share, const ConnectionContext& context);

}  // namespace PorticoApi
