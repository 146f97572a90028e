// SPDX-License-Identifier: Apache-2.0

#include "devices/Json.h"

#include <algorithm>
#include <memory>

#include "orlu/Limits.h"

namespace Lpm::Devices {

std::string OneLine(const Json::Value& value)
{
    Json::StreamWriterBuilder builder;
    builder["indentation"] = "";
    builder["emitUTF8"] = true;
    return Json::writeString(builder, value);
}

bool ParseObject(const std::string& text, Json::Value& value, std::string& why)
{
    if (text.size() > Orlu::Limits::kFileBytes) {
        why = "the text is too long";
        return false;
    }
    Json::CharReaderBuilder builder;
    Json::CharReaderBuilder::strictMode(&builder.settings_);
    builder["stackLimit"] = Orlu::Limits::kJsonDepth;
    const std::unique_ptr<Json::CharReader> reader(builder.newCharReader());
    try {
        if (!reader->parse(text.data(), text.data() + text.size(), &value, &why)) {
            std::ranges::replace(why, '\n', ' ');
            return false;
        }
    } catch (const Json::Exception& error) {
        why = error.what();
        return false;
    }
    if (!value.isObject()) {
        why = "the text is no JSON object";
        return false;
    }
    return true;
}

}  // namespace Lpm::Devices
