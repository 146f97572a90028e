// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "portico/Listener.h"
#include "portico/Site.h"

namespace PorticoApi {

/// Serves one connection of a consumer, any number of requests, or hands it on to the link or to
/// the events. Whatever stands still for too long is closed.
void ServeConnection(Socket socket, const Share& share, const Site& site);

}  // namespace PorticoApi
