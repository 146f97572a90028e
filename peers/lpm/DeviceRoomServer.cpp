// SPDX-License-Identifier: Apache-2.0

#include "lpm/DeviceRoomServer.h"

#include "lpm/DeviceRoom.pb.h"

#include <utility>

namespace Lpm {

using namespace LpmDevices;

namespace {

constexpr const char* kServiceName = "DeviceRoom";

}  // namespace

DeviceRoomServer::DeviceRoomServer(NotifyTargetTaskIF* task, std::function<std::string()> state)
    : m_task(task),
      m_state(std::move(state)),
      m_listener(IL::CreateServerListener(kServiceName, task))
{
}

bool DeviceRoomServer::Start()
{
    const AsyncCallback<Orlu::SocketPtr> accepted(
        [this](const Orlu::SocketPtr& socket) { HandleSocket(socket); }, m_task);
    return static_cast<bool>(m_listener->Serve(IPCDirectory::Get().Lookup(kServiceName), accepted));
}

void DeviceRoomServer::SendLine(const std::string& line)
{
    DeviceRoomLine message;
    message.set_json(line);
    for (const auto& [client, router] : m_clients) {
        router->SendMessage(DEVICE_ROOM_LINE, message);
    }
}

void DeviceRoomServer::HandleSocket(const Orlu::SocketPtr& socket)
{
    const std::uint64_t client = ++m_lastClient;
    const auto router = IPCMessageRouterFactory::CreateRouter(kServiceName, m_task, nullptr);
    m_clients[client] = router;
    router->AddHandler<DeviceRoomRequest>(
        DEVICE_ROOM_STATE,
        [this, asker = router.get()](const DeviceRoomRequest&, std::uint32_t token) {
            DeviceRoomState state;
            state.set_json(m_state());
            asker->ReplyMessage(DEVICE_ROOM_STATE, state, token);
        });
    router->Connect(socket, [this, client] { HandleDisconnect(client); });
}

void DeviceRoomServer::HandleDisconnect(std::uint64_t client)
{
    // The router calls this handler, so it must not be destroyed before the handler returns.
    m_task->QueueNotificationNonBlocking([router = m_clients.extract(client).mapped()] {});
}

}  // namespace Lpm
