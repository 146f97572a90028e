// SPDX-License-Identifier: Apache-2.0

#include <algorithm>
#include <array>
#include <cstdint>
#include <memory>
#include <sstream>
#include <string>
#include <string_view>

#include "ProtoBufs/Trellan_Service.pb.h"
#include "console/Console.pb.h"
#include "orlu/IPCFrames.h"
#include "orlu/Network.h"
#include "orlu/StrictJson.h"
#include "support/World.h"

namespace {

using namespace TrellanServiceMessages;

constexpr const char* kStore = "/mnt/nv/product-persistence/TRSCodesetConfig.json";
constexpr const char* kWhiteList = "/opt/Orlu/etc/UEI/WhiteList.json";

/// A peer on one of the service's sockets that writes arbitrary bytes and reads nothing.
class Wire {
public:
    explicit Wire(const std::string& service)
    {
        m_attempt = Orlu::Runtime().Transport().Connect(
            IPCDirectory::Get().Lookup(service).Path(), m_task->Queue(),
            [this](const Orlu::SocketPtr& socket) {
                m_socket = socket;
                if (m_socket) {
                    m_socket->Receive([](std::span<const std::uint8_t>) {},
                                      [this] { m_socket = nullptr; });
                }
            });
    }
    ~Wire()
    {
        if (m_socket) {
            m_socket->Close();
        }
        m_task->Stop();
    }
    Wire(const Wire&) = delete;
    Wire& operator=(const Wire&) = delete;

    void Write(std::string bytes)
    {
        IL::BreakThread(
            [this, text = std::move(bytes)] {
                if (m_socket) {
                    m_socket->Send(text);
                }
            },
            m_task.get());
    }
    void Ask(std::uint32_t id, const char* type, std::string payload)
    {
        IPCMessageEnvelope envelope;
        envelope.set_id(id);
        envelope.set_kind(IPCFrames::kRequest);
        envelope.set_token(++m_token);
        envelope.set_payload_type(type);
        envelope.set_payload(std::move(payload));
        IL::BreakThread(
            [this, envelope] {
                if (m_socket) {
                    IPCFrames::Write(envelope, *m_socket);
                }
            },
            m_task.get());
    }

private:
    std::shared_ptr<NotifyTargetTaskIF> m_task = IL::CreateTask("wire", "");
    std::unique_ptr<Orlu::TransportHandle> m_attempt;
    Orlu::SocketPtr m_socket;
    std::uint32_t m_token = 0;
};

struct Message {
    std::uint32_t id;
    const char* type;
};
constexpr std::array kMessages = {
    Message{0, "OrluKeyReqMessage_t"}, Message{1, "SrcCiCodeMessage_t"},
    Message{2, "KeyMapMessage_t"},     Message{4, "IsKeyInCodesetMessage_t"},
    Message{5, "FindCECDevice_t"},     Message{6, "CloudConnectState_t"},
    Message{8, "DirectEntryResp_t"},   Message{10, "FindEDIDDevice_t"},
};
constexpr std::array kResources = {"/system/info", "/system/sources", "/network/status",
                                   "/payload/cfg", "/payload/publish"};
struct Endpoint {
    Portico::Method method;
    const char* path;
};
constexpr std::array kEndpoints = {
    Endpoint{Portico::Method::kGet, "/remote/integration"},
    Endpoint{Portico::Method::kPut, "/remote/integration"},
    Endpoint{Portico::Method::kPost, "/remote/integration/brandList"},
    Endpoint{Portico::Method::kPut, "/remote/integration/directEntry"},
};

/// The service and its interfaces, which the input selects by number.
class Fuzzed {
public:
    Fuzzed()
    {
        m_world.root.Write(kStore, R"({"codesets": [{"name": "T2051", "details": {"devNum": 2051,
            "keyMap": {"keys": [1, 9]}}}]})");
        m_world.qsp.binaries = {{"T2051", "binary"}, {"S0456", "other"}};
        m_world.qsp.lists = {{"get_brand_name", {"Acme", "Aurora"}},
                             {"get_codeset_name", {"T2051"}},
                             {"get_model_name", {"M1"}}};
        m_world.Start();
        m_world.portico.Put("/system/sources", R"({"sources": []})");
        m_world.PutProductValues();
        m_client = std::make_unique<Wire>("TrellanService");
        m_console = std::make_unique<Wire>("TrellanServiceCommandLineClient");
        m_world.runtime.Advance(2000);
    }

    void Feed(std::uint8_t interface, std::uint8_t which, std::string bytes)
    {
        switch (interface % 9) {
            case 0: {
                const auto& message = kMessages[which % kMessages.size()];
                m_client->Ask(message.id, message.type, std::move(bytes));
                break;
            }
            case 1:
                m_client->Write(std::move(bytes));
                break;
            case 2:
                m_world.lpm.Reply(which, std::move(bytes));
                break;
            case 3:
                which % 2 == 0 ? m_world.lpm.BlasterDone(Hex(bytes))
                               : m_world.lpm.KeyMap(Hex(bytes));
                break;
            case 4: {
                const auto& endpoint = kEndpoints[which % kEndpoints.size()];
                m_world.portico.Request(endpoint.method, endpoint.path, bytes);
                break;
            }
            case 5:
                m_world.portico.Put(kResources[which % kResources.size()], bytes);
                m_world.portico.Notify(kResources[which % kResources.size()], bytes);
                break;
            case 6:
                Type(bytes);
                break;
            case 7:
                m_world.root.Write(kWhiteList, bytes);
                break;
            default:
                m_client = std::make_unique<Wire>("TrellanService");
        }
        m_world.runtime.Advance(which);
    }

    void Leave()
    {
        m_world.runtime.Advance(40'000);
        std::string why;
        if (const auto store = m_world.root.Read(kStore);
            !store.empty() && !Orlu::ParseStrictJson(store, why)) {
            __builtin_trap();
        }
    }

private:
    void Type(const std::string& bytes)
    {
        OrluConsole::Line line;
        line.add_word("trs");
        std::istringstream words(bytes);
        for (std::string word; words >> word;) {
            line.add_word(word);
        }
        m_console->Ask(OrluConsole::CONSOLE_LINE, "Line", line.SerializeAsString());
    }

    World m_world;
    std::unique_ptr<Wire> m_client;
    std::unique_ptr<Wire> m_console;
};

}  // namespace

// A sequence of inputs to the service. Each is an interface, a selection within it, a length and
// that many bytes.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    DPrint::SetLevel(4);
    Fuzzed service;
    std::string_view rest(reinterpret_cast<const char*>(data), size);
    while (rest.size() >= 3) {
        const auto length = static_cast<std::uint8_t>(rest[2]);
        service.Feed(static_cast<std::uint8_t>(rest[0]), static_cast<std::uint8_t>(rest[1]),
                     std::string(rest.substr(3, length)));
        rest.remove_prefix(std::min<std::size_t>(rest.size(), 3U + length));
    }
    service.Leave();
    return 0;
}
