// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "portico/PorticoClientIF.h"

/// Why there is no client; see `PorticoClient::Create`.
enum PORTICO_CLIENT_ERRORS { PORTICO_CLIENT_BAD_ADDRESS = 1 };

namespace Portico {

/// For the product's own clients; empty here.
struct CommonClientCreationInfo {};

}  // namespace Portico

namespace PorticoClient {

using OnConnected = Callback<void>;
using OnFailure = AsyncCallback<std::string, PORTICO_CLIENT_ERRORS>;

/// A client of the local API at this host and port. If `ORLU_PORTICO_PORT` is a port number, it
/// replaces the port. Returns at once, whether or not the local API is running. `name` is for the
/// local API's log; the other two names are not used.
///
/// The link runs on the task of the first callback that is registered, so that a request needs no
/// change of thread; it never blocks there. Without a task, or with `connected` set outside of one,
/// it runs on a thread that all such clients share. `connected`, if set, is called where the link
/// runs, each time the link is up. `failure`, if set, is called if the address cannot be used; then
/// the result is null.
std::shared_ptr<PorticoClientIF> Create(const std::string& name, const std::string& host,
                                        std::uint16_t port, const std::string& secondName,
                                        const std::string& thirdName, const OnConnected& connected,
                                        const OnFailure& failure,
                                        const Portico::CommonClientCreationInfo& info);

}  // namespace PorticoClient
