// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Portico {

/// One message on the link between a service and the local API, one WebSocket text message each
/// (docs/api/link.md): a JSON object, and behind a line feed, verbatim, what it carries.
///
///     {"type":"request","id":7,"method":"PUT","path":"/remote/integration"}
///     {"action":"ACTION_START","deviceType":"DEVICE_TYPE_TV","deviceBrand":"Acme"}
struct LinkMessage {
    enum class Type {
        kHello,      ///< service: `name`, first of all
        kRegister,   ///< service: serves `method` on `path`
        kInterest,   ///< service: wants to hear of the readiness of `paths`
        kSubscribe,  ///< service: wants the notifications of `path`
        kWithdraw,   ///< service: takes back what has this `id`
        kRequest,    ///< both: `method` on `path`, with a body
        kAnswer,     ///< both: to the request with this `id`; an error if `isError`
        kReady,      ///< local API: all paths of the interest with this `id` are ready
        kNotReady,   ///< local API: they no longer are
        kNotify,     ///< local API: a notification for the subscription with this `id`
        kChanged,    ///< service: its resource at `path` has changed, to what the body says
    };

    Type type = Type::kHello;
    std::uint64_t id = 0;  ///< Above 0 but for hello; each side counts its own requests.
    std::string name;      ///< UTF-8.
    std::string method;    ///< GET, PUT or POST.
    std::string path;
    std::vector<std::string> paths;
    bool isError = false;
    std::string body;
};

/// Of a resource: "/" and words of letters, digits, "-", "_", "~" and "." between single slashes;
/// no word is "." or "..", and all is at most `Limits::kPathBytes` long.
bool IsResourcePath(std::string_view path);

std::string WriteLinkMessage(const LinkMessage& message);

/// Nothing, and the reason in `why`, for anything that is no such message: a member is missing, is
/// of another type or no path. JsonMembers of no meaning are ignored, the body is not looked at.
std::optional<LinkMessage> ReadLinkMessage(std::string_view text, std::string& why);

}  // namespace Portico
