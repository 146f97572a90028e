// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <stdexcept>
#include <string>
#include <string_view>

namespace google::protobuf {
class Message;
}

/// Messages as JSON and back, by protobuf's own rules: enums by name, bytes in base64.
namespace ProtoToMarkup {

class MarkupError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// `schemaNames`: members are called as in the schema, not in camel case. `printUnset`: members
/// that are not set are written with their default. `indent`: on several lines.
/// Throws `MarkupError` for a message that cannot be read back: text that is not UTF-8.
std::string ToJson(const google::protobuf::Message& message, bool schemaNames, bool printUnset,
                   bool indent);

/// Fills `message` anew. Unknown members are ignored. Throws `MarkupError`, and leaves `message`
/// empty, for what is not JSON, not UTF-8, nested deeper than `Limits::kJsonDepth`, of a wrong
/// type, or without a required field.
void FromJson(std::string_view text, google::protobuf::Message& message);

/// The same; `name` stands in the error's text.
void FromJson(std::string_view text, google::protobuf::Message& message, const std::string& name);

}  // namespace ProtoToMarkup
