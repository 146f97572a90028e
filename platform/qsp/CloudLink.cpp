// SPDX-License-Identifier: Apache-2.0

#include "qsp/CloudLink.h"

#include <cstddef>
#include <cstdlib>
#include <memory>
#include <optional>

#include <json/writer.h>

#include "orlu/Limits.h"
#include "orlu/StrictJson.h"
#include "qsp/ReasonCodes.h"

namespace QSP {

namespace {

constexpr std::size_t kRequestBytes = 64 * 1024;
/// The largest answer is a guided test; one of a type with some thousand code sets is well below
/// this.
constexpr std::size_t kAnswerBytes = 4 * 1024 * 1024;

std::string Write(const Json::Value& value)
{
    Json::StreamWriterBuilder builder;
    builder["indentation"] = "";
    builder["emitUTF8"] = true;
    return Json::writeString(builder, value);
}

bool IsText(const Json::Value& value)
{
    // Texts are handed out as C strings, which a zero would cut.
    return value.isString() && value.asString().find('\0') == std::string::npos;
}

}  // namespace

int CloudLink::Ask(const char* operation, Json::Value request, Json::Value& answer) const
{
    if (m_post == nullptr) {
        return Reason::kNoCallback;
    }
    request["operation"] = operation;
    request["identity"] = m_identity;
    request["vector"] = m_vector;
    const std::string body = Write(request);
    if (body.size() > kRequestBytes) {
        return Reason::kBadArgument;
    }
    char* response = nullptr;
    std::uint32_t length = 0;
    const int code = m_post(body.c_str(), static_cast<std::uint32_t>(body.size()), &response,
                            &length, m_url.c_str());
    // Taken over before the code is looked at, so that no path leaks the response.
    const std::unique_ptr<char, decltype(&std::free)> owner(response, &std::free);
    if (code != Reason::kSuccess) {
        return code;
    }
    if (response == nullptr || length > kAnswerBytes) {
        return Reason::kBadAnswer;
    }
    std::string error;
    std::optional<Json::Value> value = Orlu::ParseStrictJson({response, length}, error);
    if (!value || !value->isObject() || !(*value)["status"].isInt()) {
        return Reason::kBadAnswer;
    }
    answer = std::move(*value);
    return answer["status"].asInt();
}

bool ReadText(const Json::Value& object, const char* member, std::string& text)
{
    if (!object.isObject() || !IsText(object[member])) {
        return false;
    }
    text = object[member].asString();
    return true;
}

bool ReadTexts(const Json::Value& object, const char* member, std::vector<std::string>& texts)
{
    if (!object.isObject() || !object[member].isArray()) {
        return false;
    }
    for (const Json::Value& value : object[member]) {
        if (!IsText(value)) {
            return false;
        }
        texts.push_back(value.asString());
    }
    return true;
}

bool ReadNumber(const Json::Value& object, const char* member, std::uint32_t most,
                std::uint32_t& number)
{
    if (!object.isObject() || !object[member].isUInt() || object[member].asUInt() > most) {
        return false;
    }
    number = object[member].asUInt();
    return true;
}

}  // namespace QSP
