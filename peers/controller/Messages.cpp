// SPDX-License-Identifier: Apache-2.0

#include "controller/Messages.h"

#include <array>
#include <charconv>

#include "ProtoBufs/Trellan_MessageIDs.pb.h"
#include "ProtoBufs/Trellan_Service.pb.h"
#include "orlu/ProtoToMarkup.h"

using namespace TrellanServiceMessages;

namespace Controller {

namespace {

/// The kind of an envelope that answers a request.
constexpr std::uint32_t kReply = 2;

template <class Message>
const google::protobuf::Message& Example()
{
    return Message::default_instance();
}

constexpr std::array<MessageKind, 11> kKinds{{
    {TrellanService_MESSAGE_ID_ORLU_KEY_REQ, Direction::kRequest, Example<OrluKeyReqMessage_t>},
    {TrellanService_MESSAGE_ID_SRC_CICODES, Direction::kToService, Example<SrcCiCodeMessage_t>},
    {TrellanService_MESSAGE_ID_KEYMAP_REQ, Direction::kRequest, Example<KeyMapMessage_t>},
    {TrellanService_MESSAGE_ID_STATE_CHANGED, Direction::kFromService, Example<State>},
    {TrellanService_MESSAGE_ID_IS_KEY_IN_CODESET, Direction::kRequest,
     Example<IsKeyInCodesetMessage_t>},
    {TrellanService_MESSAGE_ID_FIND_CEC_DEV_REQ, Direction::kRequest, Example<FindCECDevice_t>},
    {TrellanService_MESSAGE_ID_IS_CLOUD_CONNECTED, Direction::kRequest,
     Example<CloudConnectState_t>},
    {TrellanService_MESSAGE_ID_CLOUD_CONNECTION_CHANGED, Direction::kFromService,
     Example<CloudConnectState_t>},
    {TrellanService_MESSAGE_ID_DIRECT_ENTRY, Direction::kRequest, Example<DirectEntryResp_t>},
    {TrellanService_MESSAGE_ID_BLASTER_SYNC_COMPLETE, Direction::kFromService,
     Example<BlasterSync_t>},
    {TrellanService_MESSAGE_ID_FIND_EDID_DEV_REQ, Direction::kRequest, Example<FindEDIDDevice_t>},
}};

std::string_view Trim(std::string_view text)
{
    constexpr std::string_view kBlanks = " \t\r\n";
    const auto begin = text.find_first_not_of(kBlanks);
    if (begin == std::string_view::npos) {
        return {};
    }
    return text.substr(begin, text.find_last_not_of(kBlanks) - begin + 1);
}

}  // namespace

std::span<const MessageKind> MessageKinds()
{
    return kKinds;
}

const MessageKind* FindKind(std::uint32_t id)
{
    for (const auto& kind : kKinds) {
        if (kind.id == id) {
            return &kind;
        }
    }
    return nullptr;
}

std::optional<ToService> ReadLine(std::string_view line, std::string& complaint)
{
    const std::string_view trimmed = Trim(line);
    const auto idEnd = std::min(trimmed.find_first_of(" \t{"), trimmed.size());
    const auto id = ReadNumber(trimmed.substr(0, idEnd), UINT32_MAX);
    if (!id) {
        complaint = "a line is a message id and its JSON, such as: 6 {}";
        return {};
    }
    const MessageKind* kind = FindKind(*id);
    if (!kind) {
        complaint = "no message has the id " + std::to_string(*id);
        return {};
    }
    if (kind->direction == Direction::kFromService) {
        complaint = "the service sends id " + std::to_string(*id) + ", it does not take it";
        return {};
    }
    ToService toService{*id, std::shared_ptr<google::protobuf::Message>(kind->example().New())};
    const std::string_view json = Trim(trimmed.substr(idEnd));
    try {
        ProtoToMarkup::FromJson(json.empty() ? "{}" : json, *toService.message);
    } catch (const ProtoToMarkup::MarkupError& error) {
        complaint = error.what();
        return {};
    }
    return toService;
}

std::optional<std::string> MessageLine(const IPCMessageEnvelope& envelope)
{
    const MessageKind* kind = FindKind(envelope.id());
    if (!kind) {
        return {};
    }
    const std::unique_ptr<google::protobuf::Message> message(kind->example().New());
    if (!GetPayload(envelope, *message)) {
        return {};
    }
    try {
        return ProtoToMarkup::ToJson(*message, true, false, false);
    } catch (const ProtoToMarkup::MarkupError&) {
        return {};
    }
}

std::string EnvelopeLine(const IPCMessageEnvelope& envelope)
{
    return "{\"id\": " + std::to_string(envelope.id()) + ", \"kind\": \"" +
           (envelope.kind() == kReply ? "reply" : "event") +
           "\", \"message\": " + MessageLine(envelope).value_or("null") + "}";
}

std::optional<std::uint32_t> ReadNumber(std::string_view text, std::uint32_t max)
{
    // from_chars does not read the prefix of a hexadecimal number.
    int base = 10;
    if (text.starts_with("0x") || text.starts_with("0X")) {
        text.remove_prefix(2);
        base = 16;
    }
    std::uint32_t number = 0;
    const char* end = text.data() + text.size();
    const auto [stopped, error] = std::from_chars(text.data(), end, number, base);
    if (error != std::errc() || stopped != end || number > max) {
        return {};
    }
    return number;
}

}  // namespace Controller
