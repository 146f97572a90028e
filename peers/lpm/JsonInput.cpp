// SPDX-License-Identifier: Apache-2.0

#include "lpm/JsonInput.h"

#include "lpm/BlasterProtocol.h"
#include "orlu/Limits.h"
#include "orlu/SystemUtils.h"

#include <json/reader.h>

#include <algorithm>
#include <memory>

namespace Lpm {

std::optional<Json::Value> ParseJson(std::string_view text, std::string& why)
{
    if (text.size() > Orlu::Limits::kFrameBytes || !StringUtils::IsUtf8(text)) {
        why = "too long, or not UTF-8";
        return std::nullopt;
    }
    Json::CharReaderBuilder builder;
    Json::CharReaderBuilder::strictMode(&builder.settings_);
    builder["stackLimit"] = Orlu::Limits::kJsonDepth;
    const std::unique_ptr<Json::CharReader> reader(builder.newCharReader());
    Json::Value value;
    try {
        if (reader->parse(text.data(), text.data() + text.size(), &value, &why)) {
            return value;
        }
    } catch (const Json::Exception& error) {
        // jsoncpp throws at text with more levels than its stack limit.
        why = error.what();
    }
    std::ranges::replace(why, '\n', ' ');
    return std::nullopt;
}

bool HasOnly(const Json::Value& value, std::initializer_list<std::string_view> names,
             std::string& why)
{
    if (!value.isObject()) {
        why = "not an object";
        return false;
    }
    for (const std::string& name : value.getMemberNames()) {
        if (std::ranges::find(names, name) == names.end()) {
            why = "unknown member \"" + name + "\"";
            return false;
        }
    }
    return true;
}

std::optional<std::int64_t> JsonMembers::Integer(const char* name, std::int64_t lowest,
                                                 std::int64_t highest)
{
    const Json::Value* value = Take(name, &Json::Value::isInt64, "a whole number");
    if (value == nullptr) {
        return std::nullopt;
    }
    const std::int64_t number = value->asInt64();
    if (number < lowest || number > highest) {
        Fail(name, "out of range");
        return std::nullopt;
    }
    return number;
}

std::optional<bool> JsonMembers::Bool(const char* name)
{
    const Json::Value* value = Take(name, &Json::Value::isBool, "true or false");
    return value != nullptr ? std::optional(value->asBool()) : std::nullopt;
}

std::optional<std::string> JsonMembers::Hex(const char* name)
{
    const Json::Value* value = Take(name, &Json::Value::isString, "a text");
    if (value == nullptr) {
        return std::nullopt;
    }
    auto bytes = FromHex(value->asString());
    if (!bytes) {
        Fail(name, "no hexadecimal bytes");
    }
    return bytes;
}

const Json::Value* JsonMembers::Array(const char* name)
{
    return Take(name, &Json::Value::isArray, "an array");
}

const Json::Value* JsonMembers::Take(const char* name, bool (Json::Value::*is)() const,
                                     const char* kind)
{
    if (!m_object.isMember(name)) {
        return nullptr;
    }
    const Json::Value& value = m_object[name];
    if (!(value.*is)()) {
        Fail(name, std::string("not ") + kind);
        return nullptr;
    }
    return &value;
}

void JsonMembers::Fail(const char* name, const std::string& what)
{
    if (m_why.empty()) {
        m_why = std::string("\"") + name + "\" is " + what;
    }
}

}  // namespace Lpm
