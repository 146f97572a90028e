// SPDX-License-Identifier: Apache-2.0

#include "portico/LinkStream.h"

#include <boost/beast/websocket/rfc6455.hpp>

#include <string>
#include <utility>

namespace Portico {

void ShakeHands(LinkStream& stream, std::uint16_t port,
                std::function<void(boost::system::error_code)> done)
{
    stream.async_handshake("localhost:" + std::to_string(port), "/link", std::move(done));
}

}  // namespace Portico
