// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "portico/ConnectionContext.h"
#include "portico/Listener.h"

namespace PorticoApi {

/// Serves one connection of a consumer, any number of requests, or hands it on to the link or to
/// the events. Whatever stands still for too long is closed.
void ServeConnection(Socket socket, const Share& share, const ConnectionContext& context);

}  // namespace PorticoApi
