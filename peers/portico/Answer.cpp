// SPDX-License-Identifier: Apache-2.0

#include "portico/Answer.h"

#include "ProtoBufs/PorticoError.pb.h"
#include "orlu/ProtoToMarkup.h"
#include "orlu/SystemUtils.h"

#include <utility>

namespace PorticoApi {

namespace {

constexpr int kParseSubcode = 2005;
constexpr unsigned kBadRequest = 400;
constexpr unsigned kServerError = 500;

const char* TypeOf(unsigned status)
{
    switch (status) {
        case kBadRequest:
            return "BadRequest";
        case 403:
            return "Forbidden";
        case 404:
            return "NotFound";
        case 405:
            return "MethodNotAllowed";
        case 413:
            return "TooLarge";
        case 415:
            return "UnsupportedMediaType";
        case 503:
            return "NotReady";
        case 504:
            return "NoAnswer";
        default:
            return "Failure";
    }
}

Answer Render(unsigned status, int code, int subcode, const std::string& message)
{
    Portico::Error error;
    error.set_guid("1");
    error.set_code(code);
    error.set_subcode(subcode);
    // The message may quote a request, and JSON must be UTF-8.
    error.set_message(StringUtils::IsUtf8(message) ? message : "not UTF-8 text");
    error.set_type(TypeOf(status));
    return {status, ProtoToMarkup::ToJson(error, true, false, false), {}};
}

}  // namespace

Answer Failure(unsigned status, const std::string& message)
{
    return Render(status, static_cast<int>(status), 0, message);
}

Answer BadBody(const std::string& why)
{
    return Render(kBadRequest, 0, kParseSubcode, why);
}

Answer ServiceFailure(const std::string& json)
{
    Portico::Error error;
    try {
        ProtoToMarkup::FromJson(json, error);
    } catch (const ProtoToMarkup::MarkupError&) {
        return Failure(kServerError, "the service's error is none");
    }
    unsigned status = kServerError;
    if (error.subcode() == kParseSubcode) {
        status = kBadRequest;
    } else if (error.code() >= 400 && error.code() < 600) {
        status = static_cast<unsigned>(error.code());
    }
    return {status, json, {}};
}

void Reply::Give(Answer answer)
{
    m_dropped = nullptr;
    // Emptied before the call, so that a second Give from within it has no effect.
    if (const auto give = std::exchange(m_give, nullptr)) {
        give(std::move(answer));
    }
}

void Reply::Drop()
{
    m_give = nullptr;
    if (const auto dropped = std::exchange(m_dropped, nullptr)) {
        dropped();
    }
}

}  // namespace PorticoApi
