// SPDX-License-Identifier: Apache-2.0

#include "portico/OriginCheck.h"

#include <boost/beast/core/string.hpp>

#include <string>

namespace PorticoApi {

namespace {

constexpr std::uint16_t kHttpPort = 80;

}  // namespace

bool IsOurHost(std::string_view host, std::uint16_t port)
{
    for (const std::string name : {"localhost", "127.0.0.1", "[::1]"}) {
        if (boost::beast::iequals(host, name + ":" + std::to_string(port)) ||
            (port == kHttpPort && boost::beast::iequals(host, name))) {
            return true;
        }
    }
    return false;
}

bool IsOurOrigin(std::string_view origin, std::uint16_t port)
{
    constexpr std::string_view kScheme = "http://";
    return origin.starts_with(kScheme) && IsOurHost(origin.substr(kScheme.size()), port);
}

}  // namespace PorticoApi
