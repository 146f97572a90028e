// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Portico {

/// One message on the link between a service and the local API, one WebSocket text message each
/// (docs/api/link.md): a JSON object and, after a line feed, the body, unchanged.
///
///     {"type":"request","id":7,"method":"PUT","path":"/remote/integration"}
///     {"action":"ACTION_START","deviceType":"DEVICE_TYPE_TV","deviceBrand":"Acme"}
struct LinkMessage {
    enum class Type {
        kHello,      ///< service: `name`, the first message
        kRegister,   ///< service: serves `method` on `path`
        kInterest,   ///< service: wants to be told of the readiness of `paths`
        kSubscribe,  ///< service: wants the notifications of `path`
        kWithdraw,   ///< service: ends the registration with this `id`
        kRequest,    ///< both: `method` on `path`, with a body
        kAnswer,     ///< both: to the request with this `id`; an error if `isError`
        kReady,      ///< local API: all paths of the interest with this `id` are ready
        kNotReady,   ///< local API: they no longer are
        kNotify,     ///< local API: a notification for the subscription with this `id`
        kChanged,    ///< service: its resource at `path` has changed; the body is its new value
    };

    Type type = Type::kHello;
    std::uint64_t id = 0;  ///< Above 0, except in hello; each side counts its own requests.
    std::string name;      ///< UTF-8.
    std::string method;    ///< GET, PUT or POST.
    std::string path;
    std::vector<std::string> paths;
    bool isError = false;
    std::string body;
};

/// True for the path of a resource: words of letters, digits, "-", "_", "~" and ".", each after a
/// single slash. No word is "." or "..", and the path has at most `Limits::kPathBytes`.
bool IsResourcePath(std::string_view path);

std::string WriteLinkMessage(const LinkMessage& message);

/// Nothing, with the reason in `why`, for a text that is not such a message: a member is missing,
/// has another type or is not a path. Unknown members are ignored; the body is not checked.
std::optional<LinkMessage> ReadLinkMessage(std::string_view text, std::string& why);

}  // namespace Portico
