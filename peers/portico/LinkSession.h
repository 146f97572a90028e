// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "portico/Listener.h"

#include <boost/beast/http/message.hpp>
#include <boost/beast/http/string_body.hpp>

namespace PorticoApi {

struct ConnectionContext;

using HttpRequest = boost::beast::http::request<boost::beast::http::string_body>;

/// Serves a service's link from its handshake `request` on: carries what it registers and asks to
/// and from the context's resources. A service that breaks the protocol, registers too much or
/// stops reading is cut off with a log line; whoever waits for it then gets 503.
void ServeLink(Socket socket, HttpRequest request, const Share& share,
               const ConnectionContext& context);

}  // namespace PorticoApi
