// SPDX-License-Identifier: Apache-2.0

#include "portico/PorticoClientIF.h"

#include "orlu/DPrint.h"

namespace {

constexpr DPrint kLog("PorticoClient");

}  // namespace

namespace Portico {

Error ParseError(const std::string& what)
{
    Error error;
    error.set_guid("1");
    error.set_code(kParseCode);
    error.set_subcode(kParseSubcode);
    error.set_message(what);
    return error;
}

}  // namespace Portico

void PorticoClientIF::RespondError(const Respond& respond, const Portico::Error& error)
{
    try {
        respond(true, Render(error));
    } catch (const ProtoToMarkup::MarkupError& failure) {
        // An error whose text is not UTF-8 cannot be rendered; the consumer must get an error all
        // the same.
        respond(true, Render(Portico::ParseError(failure.what())));
    }
}

void PorticoClientIF::RespondWith(const Respond& respond, const google::protobuf::Message& answer)
{
    std::string text;
    try {
        text = Render(answer);
    } catch (const ProtoToMarkup::MarkupError& failure) {
        RespondError(respond, Portico::ParseError(failure.what()));
        return;
    }
    respond(false, text);
}

Portico::Error PorticoClientIF::ErrorIn(const std::string& json)
{
    Portico::Error error;
    try {
        ProtoToMarkup::FromJson(json, error);
    } catch (const ProtoToMarkup::MarkupError& failure) {
        return Portico::ParseError(failure.what());
    }
    return error;
}

void PorticoClientIF::LogDropped(const std::string& path, const char* why)
{
    kLog.Log(2, "notification of {} dropped: {}", path, why);
}
