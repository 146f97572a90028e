// SPDX-License-Identifier: Apache-2.0

#include "codesets/Trellan_ServiceCodesetHandler.h"
#include "core/ServerLog.h"
#include "core/Trellan_Server.h"
#include "keys/Trellan_ServiceKeyHandler.h"
#include "uei/UEIInterface.h"

namespace TrellanService {

using namespace TrellanServiceMessages;  // NOLINT(google-build-using-namespace)

namespace {

/// The longest code set name that a key request may have, in bytes; real ones have 5 to 11.
constexpr std::size_t kNameBytes = 64;

/// The code set name as log and history keep it. A name that is too long is cut and gets an ending
/// that makes it invalid, so that the cut cannot give the name of another code set.
std::string BoundedName(const std::string& name)
{
    if (name.size() <= kNameBytes) {
        return name;
    }
    kServerLog.Log(2, "Code set name of {} bytes in a key request", name.size());
    return name.substr(0, kNameBytes) + "...";
}

}  // namespace

void Trellan_Server::AddHandlers(const IPCMessageRouterPtr& router)
{
    kServerLog.Put(4, __PRETTY_FUNCTION__);
    router->AddHandler<OrluKeyReqMessage_t>(
        TrellanService_MESSAGE_ID_ORLU_KEY_REQ,
        [this](const OrluKeyReqMessage_t& message, std::uint32_t token) {
            RequestHandler_OrluKeyReq(message, token);
        });
    router->AddHandler<SrcCiCodeMessage_t>(
        TrellanService_MESSAGE_ID_SRC_CICODES,
        [this](const SrcCiCodeMessage_t& message, std::uint32_t) {
            EventHandler_SrcCiCodes(message);
        });
    router->AddHandler<IsKeyInCodesetMessage_t>(
        TrellanService_MESSAGE_ID_IS_KEY_IN_CODESET,
        [this](const IsKeyInCodesetMessage_t& message, std::uint32_t token) {
            RequestHandler_IsKeyInCodeset(message, token);
        });
    router->AddHandler<KeyMapMessage_t>(
        TrellanService_MESSAGE_ID_KEYMAP_REQ,
        [this](const KeyMapMessage_t& message, std::uint32_t token) {
            RequestHandler_KeyMapReq(message, token);
        });
    router->AddHandler<FindCECDevice_t>(
        TrellanService_MESSAGE_ID_FIND_CEC_DEV_REQ,
        [this](const FindCECDevice_t& message, std::uint32_t token) {
            RequestHandler_FindCECDeviceReq(message, token);
        });
    router->AddHandler<FindEDIDDevice_t>(
        TrellanService_MESSAGE_ID_FIND_EDID_DEV_REQ,
        [this](const FindEDIDDevice_t& message, std::uint32_t token) {
            RequestHandler_FindEDIDDeviceReq(message, token);
        });
    router->AddHandler<CloudConnectState_t>(
        TrellanService_MESSAGE_ID_IS_CLOUD_CONNECTED,
        [this](const CloudConnectState_t&, std::uint32_t token) {
            RequestHandler_CloudConnectStateReq(token);
        });
    router->AddHandler<DirectEntryResp_t>(
        TrellanService_MESSAGE_ID_DIRECT_ENTRY,
        [this](const DirectEntryResp_t& message, std::uint32_t token) {
            RequestHandler_DirectEntryReq(message, token);
        });
}

void Trellan_Server::Reply(const IPCMessageRouterPtr& router, std::uint32_t id,
                           const google::protobuf::Message& message, std::uint32_t token)
{
    // A token is valid on the connection of its request only; another client may use the same
    // number.
    if (!router || router != m_router) {
        kServerLog.Put(2, "Trellan_Server is not connected");
        return;
    }
    router->ReplyMessage(id, message, token);
}

template <class Message>
AsyncCallback<Message> Trellan_Server::ReplyLater(std::uint32_t id, std::uint32_t token)
{
    return AsyncCallback<Message>([this, router = m_router, id, token](
                                      const Message& answer) { Reply(router, id, answer, token); },
                                  this);
}

void Trellan_Server::RequestHandler_OrluKeyReq(const OrluKeyReqMessage_t& message,
                                               std::uint32_t token)
{
    kServerLog.Put(4, __PRETTY_FUNCTION__);
    const std::string codeset = BoundedName(message.codeset());
    OrluKeyReqMessage_t answer = message;
    answer.set_response("PASS");
    // The client learns only that the request was handled: the blaster's reply is not passed on.
    const AsyncCallback<std::string> callback(
        [this, router = m_router, answer = std::move(answer), token](const std::string&) {
            Reply(router, TrellanService_MESSAGE_ID_ORLU_KEY_REQ, answer, token);
        },
        this);
    Trellan_ServiceKeyHandler& keys = m_neighbours.KeyHandler();
    switch (message.keyaction()) {
        case OrluKeyReqMessage_t::KEY_ACTION_CONTINUOUS_PRESS:
            keys.sendContinuousKey(codeset, message.keyval(), callback, false);
            break;
        case OrluKeyReqMessage_t::KEY_ACTION_END_PRESS:
            keys.sendEndKey(codeset, callback, false);
            break;
        case OrluKeyReqMessage_t::KEY_ACTION_SINGLE_PRESS:
            keys.sendSingleKey(codeset, message.keyval(), callback);
            break;
    }
}

void Trellan_Server::EventHandler_SrcCiCodes(const SrcCiCodeMessage_t& message)
{
    kServerLog.Put(4, __PRETTY_FUNCTION__);
    kServerLog.Put(3, "Received codesets from PC");
    m_neighbours.CodesetHandler().HandlePCSourceList(message);
}

void Trellan_Server::RequestHandler_IsKeyInCodeset(IsKeyInCodesetMessage_t message,
                                                   std::uint32_t token)
{
    message.set_response(m_neighbours.CodesetHandler().isKeyInCodeset(
        static_cast<std::uint8_t>(message.ueikey() & 0xFF), message.cicode()));
    Reply(m_router, TrellanService_MESSAGE_ID_IS_KEY_IN_CODESET, message, token);
}

void Trellan_Server::RequestHandler_KeyMapReq(const KeyMapMessage_t& message, std::uint32_t token)
{
    Reply(m_router, TrellanService_MESSAGE_ID_KEYMAP_REQ,
          m_neighbours.CodesetHandler().GetStoredKeyMap(message.cicode()), token);
}

void Trellan_Server::RequestHandler_FindCECDeviceReq(const FindCECDevice_t& message,
                                                     std::uint32_t token)
{
    const std::uint32_t id = TrellanService_MESSAGE_ID_FIND_CEC_DEV_REQ;
    if (!m_cloudConnected) {
        FindCECDevice_t answer;
        answer.set_result("RESULT_ERROR");
        // Refused at once: opening a session would block the task for a cloud that is out of reach.
        kServerLog.Put(2, "Unable to get codeset for CEC device, cloud not connected");
        Reply(m_router, id, answer, token);
        return;
    }
    kServerLog.Log(3, "Received Find CEC device req for {}", message.osd());
    m_neighbours.Engine().FindCECDevice(message, ReplyLater<FindCECDevice_t>(id, token));
}

void Trellan_Server::RequestHandler_FindEDIDDeviceReq(const FindEDIDDevice_t& message,
                                                      std::uint32_t token)
{
    const std::uint32_t id = TrellanService_MESSAGE_ID_FIND_EDID_DEV_REQ;
    if (!m_cloudConnected) {
        FindEDIDDevice_t answer;
        answer.set_result("RESULT_ERROR");
        kServerLog.Put(2, "Unable to get codeset for EDID device, cloud not connected");
        Reply(m_router, id, answer, token);
        return;
    }
    kServerLog.Put(3, "Received Find EDID device req for TV");
    m_neighbours.Engine().FindEDIDDevice(message, ReplyLater<FindEDIDDevice_t>(id, token));
}

void Trellan_Server::RequestHandler_DirectEntryReq(const DirectEntryResp_t& message,
                                                   std::uint32_t token)
{
    const std::uint32_t id = TrellanService_MESSAGE_ID_DIRECT_ENTRY;
    if (!m_cloudConnected) {
        DirectEntryResp_t answer;
        answer.set_lastresult("LAST_RESULT_ERROR");
        kServerLog.Put(2, "Unable to get codeset for Direct Entry device, cloud not connected");
        Reply(m_router, id, answer, token);
        return;
    }
    kServerLog.Log(3, "Get the codeset name for dev {} {}", message.brand(), message.model());
    DirectEntryReq_t request;
    request.set_devicetype(message.devicetype());
    request.set_brand(message.brand());
    request.set_model(message.model());
    m_neighbours.Engine().DirectEntryBrandModel(request, false,
                                                ReplyLater<DirectEntryResp_t>(id, token));
}

void Trellan_Server::RequestHandler_CloudConnectStateReq(std::uint32_t token)
{
    kServerLog.Put(3, "Get the current UEI Cloud Connect status");
    CloudConnectState_t answer;
    answer.set_connectstate(m_cloudConnected);
    Reply(m_router, TrellanService_MESSAGE_ID_IS_CLOUD_CONNECTED, answer, token);
}

}  // namespace TrellanService
