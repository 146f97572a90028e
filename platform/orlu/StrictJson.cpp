// SPDX-License-Identifier: Apache-2.0

#include "orlu/StrictJson.h"

#include <memory>

#include <json/reader.h>

#include "orlu/Limits.h"
#include "orlu/SystemUtils.h"

namespace Orlu {

namespace {

std::unique_ptr<Json::CharReader> CreateReader()
{
    Json::CharReaderBuilder builder;
    Json::CharReaderBuilder::strictMode(&builder.settings_);
    builder["stackLimit"] = Limits::kJsonDepth;
    return std::unique_ptr<Json::CharReader>(builder.newCharReader());
}

/// The reader's text has several lines: "* Line 1, Column 2\n  Syntax error: …\n".
std::string OneLine(const std::string& words)
{
    std::string line;
    for (const char c : words) {
        const bool blank = c == '\n' || c == ' ';
        if (!blank || (!line.empty() && line.back() != ' ')) {
            line += blank ? ' ' : c;
        }
    }
    line.erase(0, line.starts_with("* ") ? 2 : 0);
    line.erase(line.find_last_not_of(' ') + 1);
    return line;
}

}  // namespace

std::optional<Json::Value> ParseStrictJson(std::string_view text, std::string& error)
{
    // The reader would take a zero as the end of the text and accept what is before it.
    if (!StringUtils::IsUtf8(text) || text.find('\0') != std::string_view::npos) {
        error = "not UTF-8 text";
        return std::nullopt;
    }
    // One for each thread: making a reader costs more time than reading most texts.
    thread_local const std::unique_ptr<Json::CharReader> reader = CreateReader();
    try {
        Json::Value value;
        if (reader->parse(text.data(), text.data() + text.size(), &value, &error)) {
            return value;
        }
        error = OneLine(error);
    } catch (const Json::Exception&) {
        // The reader throws if the nesting is too deep.
        error = "nested too deeply";
    }
    return std::nullopt;
}

}  // namespace Orlu
