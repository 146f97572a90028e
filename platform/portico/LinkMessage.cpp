// SPDX-License-Identifier: Apache-2.0

#include "portico/LinkMessage.h"

#include "orlu/Limits.h"
#include "orlu/StrictJson.h"

#include <fmt/format.h>
#include <json/writer.h>

#include <algorithm>
#include <iterator>

namespace Portico {

namespace {

namespace Limits = Orlu::Limits;

enum Member : unsigned { kId = 1, kName = 2, kMethod = 4, kPath = 8, kPaths = 16, kError = 32 };

/// The members of each type, in the order of `LinkMessage::Type`, which is the index of a row.
struct Shape {
    const char* type;
    unsigned members;
};

constexpr Shape kShapes[] = {
    {"hello", kName},           {"register", kId | kMethod | kPath},
    {"interest", kId | kPaths}, {"subscribe", kId | kPath},
    {"withdraw", kId},          {"request", kId | kMethod | kPath},
    {"answer", kId | kError},   {"ready", kId},
    {"notReady", kId},          {"notify", kId},
    {"changed", kPath},
};
static_assert(std::size(kShapes) == static_cast<std::size_t>(LinkMessage::Type::kChanged) + 1);

constexpr std::string_view kMethods[] = {"GET", "PUT", "POST"};

bool IsPathCharacter(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
           std::string_view("-_~.").find(c) != std::string_view::npos;
}

bool IsWord(std::string_view word)
{
    return !word.empty() && word != "." && word != ".." &&
           std::all_of(word.begin(), word.end(), IsPathCharacter);
}

bool ReadText(const Json::Value& value, std::string& text)
{
    if (!value.isString()) {
        return false;
    }
    text = value.asString();
    return text.size() <= Limits::kPathBytes;
}

bool ReadPath(const Json::Value& value, std::string& path)
{
    return ReadText(value, path) && IsResourcePath(path);
}

bool ReadPaths(const Json::Value& value, std::vector<std::string>& paths)
{
    if (!value.isArray() || value.size() > Limits::kLinkPaths) {
        return false;
    }
    paths.resize(value.size());
    for (Json::ArrayIndex i = 0; i < value.size(); ++i) {
        if (!ReadPath(value[i], paths[i])) {
            return false;
        }
    }
    return true;
}

bool ReadMember(const Json::Value& head, Member member, LinkMessage& message)
{
    switch (member) {
        case kId:
            message.id = head["id"].isUInt64() ? head["id"].asUInt64() : 0;
            return message.id > 0;
        case kName:
            return ReadText(head["name"], message.name);
        case kMethod:
            return ReadText(head["method"], message.method) &&
                   std::ranges::find(kMethods, message.method) != std::end(kMethods);
        case kPath:
            return ReadPath(head["path"], message.path);
        case kPaths:
            return ReadPaths(head["paths"], message.paths);
        case kError:
            // Without this member the answer is not an error.
            message.isError = head["error"].isBool() && head["error"].asBool();
            return head["error"].isNull() || head["error"].isBool();
    }
    return false;
}

std::string PathList(const std::vector<std::string>& paths)
{
    std::string list;
    for (const auto& path : paths) {
        list += (list.empty() ? "\"" : ",\"") + path + '"';
    }
    return list;
}

std::string ReadHead(const Json::Value& head, LinkMessage& message)
{
    if (!head.isObject() || !head["type"].isString()) {
        return "it has no type";
    }
    const auto shape = std::ranges::find(kShapes, head["type"].asString(), &Shape::type);
    if (shape == std::end(kShapes)) {
        return "its type is unknown";
    }
    message.type = static_cast<LinkMessage::Type>(shape - std::begin(kShapes));
    for (const Member member : {kId, kName, kMethod, kPath, kPaths, kError}) {
        if ((shape->members & member) != 0 && !ReadMember(head, member, message)) {
            return std::string("a member is missing or wrong in ") + shape->type;
        }
    }
    return {};
}

}  // namespace

bool IsResourcePath(std::string_view path)
{
    if (path.empty() || path.size() > Limits::kPathBytes) {
        return false;
    }
    while (!path.empty()) {
        const auto end = std::min(path.find('/', 1), path.size());
        if (path[0] != '/' || !IsWord(path.substr(1, end - 1))) {
            return false;
        }
        path.remove_prefix(end);
    }
    return true;
}

std::string WriteLinkMessage(const LinkMessage& message)
{
    const Shape& shape = kShapes[static_cast<std::size_t>(message.type)];
    std::string text;
    // Written by hand: of the members only a name can hold characters that JSON escapes.
    text.reserve(message.body.size() + message.path.size() + 128);
    text.append(R"({"type":")").append(shape.type).append(1, '"');
    if ((shape.members & kId) != 0) {
        text.append(R"(,"id":)").append(fmt::format_int(message.id).c_str());
    }
    if ((shape.members & kName) != 0) {
        text.append(R"(,"name":)").append(Json::valueToQuotedString(message.name.c_str()));
    }
    if ((shape.members & kMethod) != 0) {
        text.append(R"(,"method":")").append(message.method).append(1, '"');
    }
    if ((shape.members & kPath) != 0) {
        text.append(R"(,"path":")").append(message.path).append(1, '"');
    }
    if ((shape.members & kPaths) != 0) {
        text.append(R"(,"paths":[)").append(PathList(message.paths)).append(1, ']');
    }
    if (message.isError) {
        text.append(R"(,"error":true)");
    }
    text.append(1, '}');
    if (!message.body.empty()) {
        text.append(1, '\n').append(message.body);
    }
    return text;
}

std::optional<LinkMessage> ReadLinkMessage(std::string_view text, std::string& why)
{
    const auto end = text.find('\n');
    const auto head = Orlu::ParseStrictJson(text.substr(0, end), why);
    if (!head) {
        return std::nullopt;
    }
    LinkMessage message;
    why = ReadHead(*head, message);
    if (!why.empty()) {
        return std::nullopt;
    }
    // The body is passed on as it is; its reader checks it.
    if (end != std::string_view::npos) {
        message.body = text.substr(end + 1);
    }
    return message;
}

}  // namespace Portico
