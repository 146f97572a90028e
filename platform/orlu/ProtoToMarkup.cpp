// SPDX-License-Identifier: Apache-2.0

#include "orlu/ProtoToMarkup.h"

#include <memory>
#include <vector>

#include <fmt/format.h>
#include <google/protobuf/descriptor.h>
#include <google/protobuf/message.h>
#include <google/protobuf/reflection.h>
#include <google/protobuf/util/json_util.h>
#include <google/protobuf/util/type_resolver_util.h>

#include "orlu/StrictJson.h"
#include "orlu/SystemUtils.h"

namespace ProtoToMarkup {

namespace {

using google::protobuf::FieldDescriptor;
using google::protobuf::Message;
using google::protobuf::Reflection;
namespace util = google::protobuf::util;

constexpr char kUrlPrefix[] = "type.local";

/// A value that the sender made as long as he liked must not fill the log.
constexpr std::size_t kReasonBytes = 200;

[[noreturn]] void Refuse(std::string_view name, std::string_view reason)
{
    // protobuf puts a picture of the place below its first line, and an empty place before it.
    reason = reason.substr(0, reason.find('\n'));
    reason.remove_prefix(reason.starts_with(": ") ? 2 : 0);
    throw MarkupError(fmt::format("{}: {}", name, reason.substr(0, kReasonBytes)));
}

util::TypeResolver& Resolver()
{
    static util::TypeResolver* const resolver = util::NewTypeResolverForDescriptorPool(
        kUrlPrefix, google::protobuf::DescriptorPool::generated_pool());
    return *resolver;
}

std::string TypeUrl(const Message& message)
{
    return fmt::format("{}/{}", kUrlPrefix, message.GetDescriptor()->full_name());
}

/// The name of a string field in `message` that holds no UTF-8; empty if there is none. protobuf
/// would write such a text as an empty one and call that a success.
std::string FindBadText(const Message& message)
{
    const Reflection& reflection = *message.GetReflection();
    std::vector<const FieldDescriptor*> fields;
    reflection.ListFields(message, &fields);
    std::string scratch;
    for (const FieldDescriptor* field : fields) {
        const int count = field->is_repeated() ? reflection.FieldSize(message, field) : 1;
        for (int i = 0; i < count; ++i) {
            if (field->type() == FieldDescriptor::TYPE_STRING) {
                const std::string& text =
                    field->is_repeated()
                        ? reflection.GetRepeatedStringReference(message, field, i, &scratch)
                        : reflection.GetStringReference(message, field, &scratch);
                if (!StringUtils::IsUtf8(text)) {
                    return field->name();
                }
            } else if (field->cpp_type() == FieldDescriptor::CPPTYPE_MESSAGE) {
                std::string bad = FindBadText(field->is_repeated()
                                                  ? reflection.GetRepeatedMessage(message, field, i)
                                                  : reflection.GetMessage(message, field));
                if (!bad.empty()) {
                    return bad;
                }
            }
        }
    }
    return {};
}

/// Whether protobuf would write the text as it is: ASCII and Latin letters that need no escape.
bool IsPlain(std::string_view text)
{
    for (std::size_t i = 0; i < text.size(); ++i) {
        const auto c = static_cast<unsigned char>(text[i]);
        const bool latin = c == 0xC3 && i + 1 < text.size() &&
                           (static_cast<unsigned char>(text[i + 1]) & 0xC0U) == 0x80;
        if (latin) {
            ++i;
        } else if (c < ' ' || c > '~' || c == '"' || c == '\\' || c == '<' || c == '>') {
            return false;
        }
    }
    return true;
}

/// A message of lists of plain texts, written straight: protobuf takes several times as long for a
/// list of thousands of names. False for any other message.
bool WritePlainLists(const Message& message, std::string& json)
{
    const Reflection& reflection = *message.GetReflection();
    std::vector<const FieldDescriptor*> fields;
    reflection.ListFields(message, &fields);
    json.reserve(message.ByteSizeLong() * 3 / 2);  // Three characters a text in place of two bytes.
    json = "{";
    for (const FieldDescriptor* field : fields) {
        if (!field->is_repeated() || field->type() != FieldDescriptor::TYPE_STRING) {
            return false;
        }
        json.append(json.size() > 1 ? ",\"" : "\"").append(field->name()).append("\":[");
        const char* before = "\"";
        for (const std::string& text :
             reflection.GetRepeatedFieldRef<std::string>(message, field)) {
            if (!IsPlain(text)) {
                return false;
            }
            json.append(before).append(text);
            before = "\",\"";
        }
        json += "\"]";
    }
    json += '}';
    return true;
}

}  // namespace

std::string ToJson(const Message& message, bool schemaNames, bool printUnset, bool indent)
{
    const std::string& name = message.GetDescriptor()->name();
    if (!message.IsInitialized()) {
        Refuse(name, "missing " + message.InitializationErrorString());
    }
    std::string text;
    if (schemaNames && !printUnset && !indent && WritePlainLists(message, text)) {
        return text;
    }
    if (const std::string bad = FindBadText(message); !bad.empty()) {
        Refuse(name, bad + " is not UTF-8");
    }
    util::JsonPrintOptions options;
    options.preserve_proto_field_names = schemaNames;
    options.always_print_primitive_fields = printUnset;
    options.add_whitespace = indent;
    text.clear();
    const auto status = util::MessageToJsonString(message, &text, options);
    if (!status.ok()) {
        Refuse(name, std::string_view(status.message().data(), status.message().size()));
    }
    return text;
}

void FromJson(std::string_view text, Message& message)
{
    FromJson(text, message, message.GetDescriptor()->name());
}

void FromJson(std::string_view text, Message& message, const std::string& name)
{
    message.Clear();
    // protobuf's own reader takes any nesting, repeated members and single quotes: what it gets has
    // been read strictly before.
    std::string error;
    const std::optional<Json::Value> root = Orlu::ParseStrictJson(text, error);
    if (!root || !root->isObject()) {
        Refuse(name, root ? "not an object" : error);
    }
    util::JsonParseOptions options;
    options.ignore_unknown_fields = true;
    std::string binary;
    const auto status = util::JsonToBinaryString(&Resolver(), TypeUrl(message),
                                                 {text.data(), text.size()}, &binary, options);
    if (!status.ok()) {
        Refuse(name, std::string_view(status.message().data(), status.message().size()));
    }
    if (!message.ParsePartialFromString(binary) || !message.IsInitialized()) {
        message.Clear();
        Refuse(name, "not readable");
    }
}

}  // namespace ProtoToMarkup
