// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "orlu/IPCMessageRouter.h"

/// What the product controller and the service say to each other, and how a line of text says it.
namespace Controller {

enum class Direction {
    kRequest,  // to the service, which answers under the same id
    kToService,
    kFromService
};

/// One row of the catalogue; `example` gives an empty message of the kind.
struct MessageKind {
    std::uint32_t id;
    Direction direction;
    const google::protobuf::Message& (*example)();
};

/// All kinds, in the order of their ids.
std::span<const MessageKind> MessageKinds();

/// Null for an id that nobody sends.
const MessageKind* FindKind(std::uint32_t id);

/// A message to send: an id of the catalogue that the service takes, and the message it calls for.
struct ToService {
    std::uint32_t id = 0;
    std::shared_ptr<google::protobuf::Message> message;
};

/// What a line `<id> <json>` says; no JSON at all is an empty message. Otherwise nothing, and
/// `complaint` says why in one sentence.
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
