// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <string_view>

namespace PorticoApi {

/// Whether `host` is a loopback name with our port. Any other host means that a foreign page has
/// its name resolved to this machine (DNS rebinding).
bool IsOurHost(std::string_view host, std::uint16_t port);

/// Whether a page of this origin may send requests: `origin` is ours over plain HTTP.
bool IsOurOrigin(std::string_view origin, std::uint16_t port);

}  // namespace PorticoApi
