// SPDX-License-Identifier: Apache-2.0

#include "controller/PageService.h"

#include <utility>

#include <json/writer.h>

#include "ProtoBufs/PorticoError.pb.h"
#include "ProtoBufs/Sources.pb.h"
#include "ProtoBufs/Trellan_MessageIDs.pb.h"
#include "ProtoBufs/Trellan_Service.pb.h"
#include "controller/Command.h"
#include "controller/Session.h"
#include "lpm/DeviceRoom.pb.h"
#include "orlu/Limits.h"
#include "orlu/ProtoToMarkup.h"
#include "orlu/StrictJson.h"

namespace Controller {

using namespace TrellanServiceMessages;

namespace {

constexpr const char* kDeviceServiceName = "DeviceRoom";
constexpr std::uint32_t kDeviceRetryMs = 1000;
constexpr int kBadRequest = 400;
constexpr int kUnavailable = 503;

std::string OneLine(const Json::Value& value)
{
    Json::StreamWriterBuilder builder;
    builder["indentation"] = "";
    builder["emitUTF8"] = true;
    return Json::writeString(builder, value);
}

std::string Failure(int code, const std::string& message)
{
    Portico::Error error;
    error.set_code(code);
    error.set_subcode(0);
    error.set_message(message);
    return ProtoToMarkup::ToJson(error, true, false, false);
}

std::uint32_t Ms(std::chrono::milliseconds time)
{
    return static_cast<std::uint32_t>(time.count());
}

}  // namespace

PageService::PageService(NotifyTargetTaskIF* task, Tell tell)
    : m_task(task),
      m_tell(std::move(tell)),
      m_link(task, {.opened = [this] { Opened(); },
                    .unreachable = [this] { m_link.Open(kConnectTimeout); },
                    .lost = [this] { Lost(); },
                    .event =
                        [this](const IPCMessageEnvelope& event) {
                            Event(event);
                        }}),
      m_deviceListener(IL::CreateClientListener(kDeviceServiceName, kDeviceRetryMs)),
      m_devices(IPCMessageRouterFactory::CreateRouter(kDeviceServiceName, task, nullptr)),
      m_holdTimer(APTimer::Create(task, "ProductController hold")),
      m_keyTimer(APTimer::Create(task, "ProductController key"))
{
    m_holdTimer->SetTimeouts(Ms(kHoldTimeout), 0);
    m_keyTimer->SetTimeouts(Ms(kKeyTimeout), 0);
    Json::Value& state = m_values[kStatePath];
    state["service"] = state["cloud"] = state["syncing"] = false;
    state["blaster"] = true;
    m_values[kDevicesPath] = m_values[kSignalPath] = Json::Value(Json::objectValue);
    m_devices->AddHandler<LpmDevices::DeviceRoomLine>(
        LpmDevices::DEVICE_ROOM_LINE, [this](const LpmDevices::DeviceRoomLine& line,
                                             std::uint32_t) { HandleDeviceLine(line.json()); });
}

void PageService::Start()
{
    m_link.Open(kConnectTimeout);
    m_deviceListener->Serve(
        IPCDirectory::Get().Lookup(kDeviceServiceName),
        AsyncCallback<Orlu::SocketPtr>(
            [this](const Orlu::SocketPtr& socket) { ConnectToDevices(socket); }, m_task));
}

void PageService::Stop()
{
    ReleaseKey();
}

void PageService::Opened()
{
    // The service serves one client only. The relay lets other controllers use this connection.
    if (!m_link.IsRelayed()) {
        m_relay =
            std::make_unique<Relay>(m_task, m_link.Router(), [](const IPCMessageEnvelope&) {});
        if (!m_relay->Serve()) {
            m_relay.reset();
        }
    }
    ReleaseKey();
    SendSources();
    m_link.Router()->SendRequestMessage<CloudConnectState_t>(
        TrellanService_MESSAGE_ID_IS_CLOUD_CONNECTED, CloudConnectState_t(),
        [this](const CloudConnectState_t& answer) { SetState("cloud", answer.connectstate()); });
    SetState("service", true);
}

void PageService::Lost()
{
    // Queued: the relay may be the caller, and must not be destroyed in its own call.
    m_task->QueueNotificationNonBlocking([this] {
        m_relay.reset();
        m_link.Open(kConnectTimeout);
    });
    // An answer that is still missing will not come on a new connection.
    m_keyTimer->Stop();
    Json::Value state = m_values[kStatePath];
    state["service"] = state["cloud"] = state["syncing"] = false;
    state["blaster"] = true;
    SetValue(kStatePath, std::move(state));
}

void PageService::Event(const IPCMessageEnvelope& envelope)
{
    if (m_relay) {
        m_relay->Event(envelope);
    }
    CloudConnectState_t cloud;
    BlasterSync_t sync;
    State test;
    switch (envelope.id()) {
        case TrellanService_MESSAGE_ID_CLOUD_CONNECTION_CHANGED:
            if (GetPayload(envelope, cloud)) {
                SetState("cloud", cloud.connectstate());
            }
            break;
        case TrellanService_MESSAGE_ID_BLASTER_SYNC_COMPLETE:
            if (GetPayload(envelope, sync)) {
                NoteStateChange(sync.syncstate());
                SetState("syncing", !sync.syncstate());
            }
            break;
        case TrellanService_MESSAGE_ID_STATE_CHANGED:
            if (GetPayload(envelope, test)) {
                NoteStateChange(false);
                SetState("test", TrellanService_State_Name(test.state()));
            }
            break;
        default:
            break;
    }
}

std::optional<std::string> PageService::Key(const std::string& body)
{
    std::string why;
    const auto json = Orlu::ParseStrictJson(body, why);
    if (!json || !json->isObject() || !(*json)["codeset"].isString() ||
        !(*json)["key"].isString() || !(*json)["held"].isBool()) {
        return Failure(kBadRequest,
                       "a press is {\"codeset\": TEXT, \"key\": NAME, \"held\": BOOL}");
    }
    const auto key = ReadKey((*json)["key"].asString());
    Press press{(*json)["codeset"].asString(), key.value_or(0)};
    if (!key || press.codeset.size() > Orlu::Limits::kStringBytes) {
        return Failure(kBadRequest, "no such key");
    }
    if (!m_link.Router()->IsConnected()) {
        return Failure(kUnavailable, "the service is not there");
    }
    if (!(*json)["held"].asBool()) {
        if (m_held == press) {
            ReleaseKey();
        }
        return {};
    }
    // The page repeats the request while the key is held: only the first one is a press.
    if (m_held != press) {
        ReleaseKey();
        m_held = press;
        m_pathMayDiffer = false;
        Send(press, true);
    }
    m_holdTimer->Start([this] { ReleaseKey(); });
    return {};
}

/// Without a connection the key stays marked as held: `Opened` releases it on the next connection,
/// since the blaster may still be sending it.
void PageService::ReleaseKey()
{
    m_holdTimer->Stop();
    if (!m_held || !m_link.Router()->IsConnected()) {
        return;
    }
    const Press press = *std::exchange(m_held, {});
    Send(press, false);
    if (m_pathMayDiffer && !press.codeset.empty()) {
        // The service sends an end press by the path of its state, which may not be the press's
        // own: one without a code set ends the key on the CEC bus, and one more, behind the sync,
        // by infrared. Where no key is held, either does nothing.
        Send({.codeset = "", .key = press.key}, false);
        m_owed = press;
    }
}

void PageService::NoteStateChange(bool isReady)
{
    m_pathMayDiffer = true;
    if (isReady && m_owed && m_link.Router()->IsConnected()) {
        Send(*std::exchange(m_owed, {}), false);
    }
}

void PageService::Send(const Press& press, bool isDown)
{
    OrluKeyReqMessage_t message;
    message.set_keyval(press.key);
    message.set_keyaction(isDown ? OrluKeyReqMessage_t::KEY_ACTION_CONTINUOUS_PRESS
                                 : OrluKeyReqMessage_t::KEY_ACTION_END_PRESS);
    message.set_codeset(press.codeset);
    if (isDown) {
        m_keyTimer->Start([this] { SetState("blaster", false); });
    }
    m_link.Router()->SendRequest(TrellanService_MESSAGE_ID_ORLU_KEY_REQ, message,
                                 [this](const IPCMessageEnvelope&) {
                                     m_keyTimer->Stop();
                                     SetState("blaster", true);
                                 });
}

void PageService::TakeSources(const std::string& json)
{
    KESTRAAPI::Sources sources;
    try {
        ProtoToMarkup::FromJson(json, sources);
    } catch (const ProtoToMarkup::MarkupError&) {
        return;
    }
    std::vector<std::string> names;
    for (const auto& source : sources.sources()) {
        if (source.status() == KESTRAAPI::READY && !source.details().cicode().empty()) {
            names.push_back(source.details().cicode());
        }
    }
    if (m_sources != names) {
        m_sources = std::move(names);
        SendSources();
    }
}

void PageService::SendSources()
{
    // Until the local API has answered the list is unknown, which is not the same as empty.
    if (m_sources) {
        SrcCiCodeMessage_t message;
        for (const auto& name : *m_sources) {
            message.add_cicode(name);
        }
        m_link.Router()->SendMessage(TrellanService_MESSAGE_ID_SRC_CICODES, message);
    }
}

std::string PageService::Value(const std::string& path) const
{
    return OneLine(m_values[path]);
}

void PageService::SetState(const char* member, Json::Value value)
{
    Json::Value state = m_values[kStatePath];
    state[member] = std::move(value);
    SetValue(kStatePath, std::move(state));
}

void PageService::SetValue(const char* path, Json::Value value)
{
    // Two presses of a key have equal values, but each is reported.
    if (std::exchange(m_values[path], std::move(value)) != m_values[path] ||
        path == std::string_view(kSignalPath)) {
        m_tell(path, Value(path));
    }
}

void PageService::ConnectToDevices(const Orlu::SocketPtr& socket)
{
    m_devices->Connect(socket, [this] { SetValue(kDevicesPath, Json::Value(Json::objectValue)); });
    m_devices->SendRequestMessage<LpmDevices::DeviceRoomState>(
        LpmDevices::DEVICE_ROOM_STATE, LpmDevices::DeviceRoomRequest(),
        [this](const LpmDevices::DeviceRoomState& state) {
            std::string why;
            if (auto devices = Orlu::ParseStrictJson(state.json(), why)) {
                SetValue(kDevicesPath, std::move(*devices));
            }
        });
}

void PageService::HandleDeviceLine(const std::string& json)
{
    std::string why;
    const auto line = Orlu::ParseStrictJson(json, why);
    if (!line || !line->isObject()) {
        return;
    }
    if ((*line)["light"].isObject()) {
        SetValue(kSignalPath, (*line)["light"]);
    } else if ((*line)["device"].isString()) {
        Json::Value devices = m_values[kDevicesPath];
        devices[(*line)["device"].asString()] = (*line)["state"];
        SetValue(kDevicesPath, std::move(devices));
    }
}

}  // namespace Controller
