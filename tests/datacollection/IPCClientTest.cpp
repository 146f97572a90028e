// SPDX-License-Identifier: Apache-2.0

#include <optional>

#include "CollectionFixture.h"
#include "datacollection/DataCollectionService.h"
#include "orlu/IPCMessageRouter.h"

namespace DataCollection {
namespace {

/// A client and the service "udc" that it connects to, on one task.
class IPCClientTest : public CollectionFixture {
protected:
    IPCClientTest() { Configure(R"({"name": "UDC", "ipc_address": "udc"})"); }

    void Serve()
    {
        m_listener = IL::CreateServerListener("udc", task.get());
        m_listener->Serve(
            IPCDirectory::Get().Lookup("udc"),
            AsyncCallback<Orlu::SocketPtr>(
                [this](const Orlu::SocketPtr& socket) { Accept(socket); }, task.get()));
    }

    void Accept(const Orlu::SocketPtr& socket)
    {
        effects.Add("connected");
        service = IPCMessageRouterFactory::CreateRouter("udc", task.get(), nullptr);
        service->AddHandler<Event>(1, [this](const Event& event, std::uint32_t token) {
            effects.Add("event " + event.type() + " at " + event.time());
            if (delivered) {
                EventStatus status;
                status.set_delivered(*delivered);
                service->ReplyMessage(1, status, token);
            }
        });
        service->Connect(socket, [] {});
    }

    void Notify(State::Values value)
    {
        State state;
        state.set_servicestatus(value);
        service->SendMessage(2, state);
    }

    bool Send() { return client->SendData(Record("Acme"), "start", Noting("delivered")); }

    std::optional<bool> delivered = true;
    IPCMessageRouterPtr service;
    std::shared_ptr<DataCollectionClientIF> client;

private:
    std::shared_ptr<APServerSocketListenerIF> m_listener;
};

TEST_F(IPCClientTest, SendsOnceTheServiceHasSaidThatItTakesEvents)
{
    client = CreateUDCIPCClient(task.get());
    client->AddEnabledCallback(Noting("enabled"));
    Run();
    Serve();
    runtime.Advance(100);
    EXPECT_EQ(Run(), "+100 connected\n");
    EXPECT_FALSE(Send());
    Notify(State::DATACOLLECTION_ENABLE);
    Notify(State::DATACOLLECTION_ENABLE);
    EXPECT_EQ(Run(), "+0 enabled 1\n");
    EXPECT_TRUE(Send());
    EXPECT_EQ(Run(), "+0 event start at 2023-11-14T22:13:20.100000+00:00\n+0 delivered 1\n");
    delivered = false;
    EXPECT_TRUE(client->SendData(Record("Acme"), "start"));
    EXPECT_EQ(Run(), "+0 event start at 2023-11-14T22:13:20.100000+00:00\n");
    EXPECT_TRUE(
        Logged("4 Default response From DataCollectionService : start, delivery status = "
               "not delivered"));
    EXPECT_FALSE(client->SendData(Record("\xff"), "start"));
}

TEST_F(IPCClientTest, SendsNothingWhileTheServiceIsAway)
{
    Serve();
    client = CreateUDCIPCClient(nullptr);
    Run();
    Notify(State::DATACOLLECTION_ENABLE);
    Run();
    delivered.reset();
    EXPECT_TRUE(Send());
    EXPECT_EQ(Run(), "+0 event start at 2023-11-14T22:13:20.000000+00:00\n");
    TakeLog();
    service->Disconnect();
    EXPECT_EQ(Run(), "");  // the answer never comes
    EXPECT_TRUE(Logged("4 Disconnecting..."));
    EXPECT_FALSE(Send());
    runtime.Advance(100);
    EXPECT_EQ(Run(), "+100 connected\n");
    EXPECT_TRUE(Send());
}

TEST_F(IPCClientTest, StaysAloneWithoutAnAddress)
{
    Serve();
    const auto ndc = CreateNDCIPCClient(task.get());
    EXPECT_TRUE(Logged("1 Cannot find value in map : ERROR"));
    DataCollectionClient::Reload();
    Configure(R"({"name": "UDC", "ipc_address": "a/b"})");
    client = CreateUDCIPCClient(task.get());
    EXPECT_TRUE(Logged("1 no address of a service for UDC: a/b"));
    EXPECT_EQ(Run(), "");
    EXPECT_FALSE(ndc->SendData(Record("Acme"), "start"));
    EXPECT_FALSE(Send());
}

}  // namespace
}  // namespace DataCollection
