// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "orlu/IPCMessageRouter.h"

/// The messages between the product controller and the service, and their form as lines of text.
namespace Controller {

enum class Direction {
    kRequest,  // to the service, which answers under the same id
    kToService,
    kFromService
};

/// One row of the message table. `example` returns an empty message of the kind.
struct MessageKind {
    std::uint32_t id;
    Direction direction;
    const google::protobuf::Message& (*example)();
};

/// All kinds, in the order of their ids.
std::span<const MessageKind> MessageKinds();

/// Null for an unknown id.
const MessageKind* FindKind(std::uint32_t id);

/// A message to send: an id that the service accepts, and a message of the id's type.
struct ToService {
    std::uint32_t id = 0;
    std::shared_ptr<google::protobuf::Message> message;
};

/// Parses a line `<id> <json>`. Without JSON the message is empty. Nothing, and the reason as one
/// sentence in `complaint`, for any other line.
std::optional<ToService> ReadLine(std::string_view line, std::string& complaint);

/// The message in an envelope as one line of JSON, field names as in the schema, set fields only.
/// Nothing if the envelope does not hold the message of its id.
std::optional<std::string> MessageLine(const IPCMessageEnvelope& envelope);

/// The same as `{"id": 0, "kind": "reply", "message": {…}}`; an envelope that holds no such message
/// gives `"message": null`.
std::string EnvelopeLine(const IPCMessageEnvelope& envelope);

/// A decimal number, or a hexadecimal one behind "0x", up to `max`.
std::optional<std::uint32_t> ReadNumber(std::string_view text, std::uint32_t max);

}  // namespace Controller
