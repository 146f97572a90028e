// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <string_view>

namespace PorticoApi {

/// Whether a request is meant for us: `host` is one of the loopback's names with our port.
/// Otherwise a page of elsewhere has had its own name point to this machine.
bool IsOurHost(std::string_view host, std::uint16_t port);

/// Whether a page may ask: `origin` is one of ours over plain HTTP.
bool IsOurOrigin(std::string_view origin, std::uint16_t port);

}  // namespace PorticoApi
