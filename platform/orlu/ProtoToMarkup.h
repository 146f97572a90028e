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

/// `schemaNames`: members are named as in the schema, not in camel case. `printUnset`: members that
/// are not set are written with their default. `indent`: on several lines. Throws `MarkupError` for
/// text that is not UTF-8 and for a missing required field.
std::string ToJson(const google::protobuf::Message& message, bool schemaNames, bool printUnset,
                   bool indent);

/// Clears `message` and fills it. Unknown members are ignored. Throws `MarkupError`, and leaves
/// `message` empty, if the text is not JSON, not UTF-8, nested deeper than `Limits::kJsonDepth`, of
/// a wrong type, or without a required field.
void FromJson(std::string_view text, google::protobuf::Message& message);

/// The same; `name` is the name in the text of the error.
void FromJson(std::string_view text, google::protobuf::Message& message, const std::string& name);

}  // namespace ProtoToMarkup
