// SPDX-License-Identifier: Apache-2.0

#include "orlu/IPCMessageRouter.h"

#include <gtest/gtest.h>

#include "orlu/DPrint.h"
#include "orlu/IPCFrames.h"
#include "orlu/Limits.h"
#include "support/VirtualRuntime.h"

namespace {

const char* const kPath = "/run/orlu/Thing.sock";

std::string* s_lines = nullptr;

/// A server and a client on tasks of their own. Envelopes serve as messages.
class RouterTest : public testing::Test {
protected:
    RouterTest()
    {
        s_lines = &m_effects;
        DPrint::SetSink([](int level, std::string_view, std::string_view text) {
            *s_lines += std::to_string(level) + " " + std::string(text) + "\n";
        });
    }

    ~RouterTest() override { DPrint::SetSink(nullptr); }

    void Serve()
    {
        m_serverListener = IL::CreateServerListener("server", m_serverTask.get());
        ASSERT_TRUE(m_serverListener->Serve(
            Network::Address(kPath),
            {[this](const Orlu::SocketPtr& socket) {
                 m_server = IPCMessageRouterFactory::CreateRouter("server", m_serverTask.get(), {});
                 m_server->Connect(socket, [this] { m_effects += "server lost\n"; });
                 Echo();
             },
             m_serverTask.get()}));
        m_runtime.RunUntilIdle();
    }

    void Connect()
    {
        m_client = IPCMessageRouterFactory::CreateRouter("client", m_clientTask.get(), {});
        m_clientListener = IL::CreateClientListener("client", 1000);
        m_clientListener->Serve(
            Network::Address(kPath),
            {[this](const Orlu::SocketPtr& socket) {
                 m_effects += "+" + std::to_string(m_runtime.Elapsed()) + " connected\n";
                 m_client->Connect(socket, [this] { m_effects += "client lost\n"; });
             },
             m_clientTask.get()});
        m_runtime.RunUntilIdle();
    }

    void ServeAndConnect()
    {
        Serve();
        Connect();
        EXPECT_EQ(Effects(), "+0 connected\n");
    }

    /// Id 1 answers with the request, id 2 never answers.
    void Echo()
    {
        m_server->AddHandler<IPCMessageEnvelope>(
            1, [this](const IPCMessageEnvelope& message, std::uint32_t token) {
                m_effects += "asked " + message.payload() + "\n";
                m_server->ReplyMessage(1, message, token);
            });
        m_server->AddHandler(2, [](const IPCMessageEnvelope&) {});
    }

    CallbackConnection Ask(std::uint32_t id, const std::string& text)
    {
        IPCMessageEnvelope message;
        message.set_payload(text);
        return m_client->SendRequestMessage<IPCMessageEnvelope>(
            id, message, {[this](const IPCMessageEnvelope& reply) {
                m_effects += "answer " + reply.payload() + "\n";
            }});
    }

    Orlu::SocketPtr Open()
    {
        Orlu::SocketPtr opened;
        const auto attempt =
            m_runtime.Net().Connect(kPath, m_clientTask->Queue(),
                                    [&opened](const Orlu::SocketPtr& socket) { opened = socket; });
        m_runtime.RunUntilIdle();
        return opened;
    }

    std::string Effects() { return std::exchange(m_effects, {}); }

    VirtualRuntime m_runtime;
    std::shared_ptr<NotifyTargetTaskIF> m_serverTask = IL::CreateTask("server", "");
    std::shared_ptr<NotifyTargetTaskIF> m_clientTask = IL::CreateTask("client", "");
    std::shared_ptr<APServerSocketListenerIF> m_serverListener;
    std::shared_ptr<APClientSocketListenerIF> m_clientListener;
    IPCMessageRouterPtr m_server;
    IPCMessageRouterPtr m_client;
    std::string m_effects;
};

TEST_F(RouterTest, ReplyFindsItsRequestAndWhatHasNoHandlerIsLogged)
{
    ServeAndConnect();
    Ask(1, "a");
    Ask(2, "b");
    Ask(1, "cancelled").Disconnect();
    m_runtime.RunUntilIdle();
    EXPECT_EQ(
        Effects(),
        "asked a\nasked cancelled\nanswer a\n"
        "2 client: unexpected message, id 1, kind 2, type \"IPCMessageEnvelope\", 11 bytes\n");

    // The second request waits for a reply with its id, its token and its type.
    IPCMessageEnvelope other;
    other.set_payload_type("Other_t\n");
    m_server->Reply(1, {}, 2);
    m_server->Reply(2, {}, 77);
    m_server->Reply(2, other, 2);
    m_server->Reply(2, {}, 2);
    m_client->Send(9, {});
    m_client->Send(1, other);
    other.Clear();
    other.set_payload("\x07");
    m_client->Send(1, other);
    m_runtime.RunUntilIdle();
    EXPECT_EQ(Effects(),
              "2 client: unexpected message, id 1, kind 2, type \"\", 0 bytes\n"
              "2 client: unexpected message, id 2, kind 2, type \"\", 0 bytes\n"
              "2 client: unexpected message, id 2, kind 2, type \"Other_t\\n\", 0 bytes\n"
              "2 client: unexpected message, id 2, kind 2, type \"\", 0 bytes\n"
              "2 server: unexpected message, id 9, kind 0, type \"\", 0 bytes\n"
              "2 server: unexpected message, id 1, kind 0, type \"Other_t\\n\", 0 bytes\n"
              "2 server: unexpected message, id 1, kind 0, type \"\", 1 bytes\n");
}

TEST_F(RouterTest, ARouterMayGoInItsOwnHandler)
{
    ServeAndConnect();
    m_server->AddHandler(3, [this](const IPCMessageEnvelope&) {
        m_effects += "released\n";
        m_server.reset();
    });
    m_client->Send(3, {});
    Ask(1, "unheard");
    m_runtime.RunUntilIdle();
    EXPECT_EQ(Effects(), "released\nclient lost\n");
    // The client connects again, but not before the interval has passed.
    m_runtime.Advance(2000);
    EXPECT_EQ(Effects(), "+1000 connected\n");
}

TEST_F(RouterTest, MessagesOfEachSizeArriveWholeButForThoseBeyondAFrame)
{
    ServeAndConnect();
    for (const std::size_t size : {0U, 3U, 200U, 70'000U}) {
        const std::string text(size, 'x');
        Ask(1, text);
        m_runtime.RunUntilIdle();
        EXPECT_EQ(Effects(), "asked " + text + "\nanswer " + text + "\n");
    }
    const std::string tooLarge(Orlu::Limits::kFrameBytes, 'x');
    EXPECT_FALSE(Ask(1, tooLarge));
    IPCMessageEnvelope reply;
    reply.set_payload(tooLarge);
    EXPECT_FALSE(m_server->Reply(7, reply, 1));
    EXPECT_FALSE(m_server->ReplyMessage(8, reply, 1));
    EXPECT_EQ(Effects(),
              "2 server: a reply with id 7 is too large, or its reader too far behind\n"
              "2 server: a reply with id 8 is too large, or its reader too far behind\n");
}

TEST_F(RouterTest, UnansweredRequestsAreBounded)
{
    ServeAndConnect();
    for (std::size_t i = 0; i <= Orlu::Limits::kPendingRequests; ++i) {
        Ask(2, "");
    }
    m_runtime.RunUntilIdle();
    EXPECT_EQ(Effects(), "2 client: request 2 is given up, 1024 wait for their reply\n");
    m_server->ReplyMessage(2, IPCMessageEnvelope(), 1);
    m_server->ReplyMessage(2, IPCMessageEnvelope(), 1025);
    m_runtime.RunUntilIdle();
    EXPECT_EQ(Effects(),
              "2 client: unexpected message, id 2, kind 2, type \"IPCMessageEnvelope\", 0 bytes\n"
              "answer \n");
}

TEST_F(RouterTest, AttemptsGoOnUntilTheServiceIsThereAndAfterALoss)
{
    Connect();
    EXPECT_FALSE(m_client->SendMessage(1, IPCMessageEnvelope()));
    EXPECT_FALSE(Ask(1, "dropped"));
    m_runtime.Advance(2500);
    Serve();
    m_runtime.Advance(1000);
    EXPECT_EQ(Effects(),
              "3 client: nobody serves /run/orlu/Thing.sock yet, trying every 1000 ms\n"
              "+3000 connected\n");

    Ask(2, "dropped with the connection");
    m_runtime.Advance(3000);
    m_serverListener.reset();
    m_server->Disconnect();
    m_runtime.Advance(4200);
    Serve();
    m_runtime.Advance(3000);
    EXPECT_EQ(Effects(),
              "client lost\n"
              "3 client: nobody serves /run/orlu/Thing.sock yet, trying every 1000 ms\n"
              "+11500 connected\n");
}

TEST_F(RouterTest, WhatIsNoFrameEndsTheConnection)
{
    const std::pair<std::string, const char*> rows[] = {
        {std::string("\x00\x10\x00\x01", 4), "a frame is too long"},
        {std::string("\0\0\0\x01\x07", 5), "a frame cannot be read"},
        {std::string("\0\0\0\x02\x18\x03", 6), "a message is of no known kind"},
    };
    Serve();
    for (const auto& [bytes, reason] : rows) {
        const auto raw = Open();
        raw->Send(IPCFrames::Encode({}) + bytes + IPCFrames::Encode({}));
        m_runtime.RunUntilIdle();
        EXPECT_EQ(Effects(),
                  "2 server: unexpected message, id 0, kind 0, type \"\", 0 bytes\n2 server: " +
                      std::string(reason) + ", the connection ends\nserver lost\n");
        EXPECT_TRUE(m_runtime.Net().Served(kPath).empty());
    }
}

TEST_F(RouterTest, APeerThatStopsReadingIsCutOff)
{
    ServeAndConnect();
    const auto socket = m_runtime.Net().Served(kPath).at(0);
    socket->Stall(true);
    IPCMessageEnvelope envelope;
    envelope.set_payload(std::string(1000, 'x'));
    int sent = 0;
    while (m_client->Send(2, envelope)) {
        ++sent;
    }
    EXPECT_GT(sent, 4000);
    m_runtime.RunUntilIdle();
    EXPECT_EQ(Effects(), "client lost\n");
}

TEST_F(RouterTest, AConnectionThatBreaksInAFrameDeliversTheWholeFramesBeforeIt)
{
    ServeAndConnect();
    m_client->AddHandler(7, [this](const IPCMessageEnvelope&) { m_effects += "whole\n"; });
    IPCMessageEnvelope event;
    event.set_id(7);
    event.set_kind(IPCFrames::kEvent);
    m_runtime.Net().Served(kPath).at(0)->CutAfter(2 * IPCFrames::Encode(event).size() - 1);
    m_server->Send(7, {});
    m_server->Send(7, {});
    m_runtime.RunUntilIdle();
    EXPECT_EQ(Effects(), "server lost\nwhole\nclient lost\n");
}

TEST_F(RouterTest, OneListenerServesSoManyConnections)
{
    std::vector<Orlu::SocketPtr> accepted, clients;
    m_serverListener = IL::CreateServerListener("server", m_serverTask.get());
    m_serverListener->Serve(Network::Address(kPath), {[&accepted](const Orlu::SocketPtr& socket) {
                                                          accepted.push_back(socket);
                                                      },
                                                      m_serverTask.get()});
    for (std::size_t i = 0; i <= Orlu::Limits::kConnections; ++i) {
        clients.push_back(Open());
    }
    EXPECT_EQ(accepted.size(), 64U);
    EXPECT_EQ(Effects(), "2 server: refused uid 1000 pid 165, 64 connections are open\n");
    accepted.pop_back();
    m_runtime.RunUntilIdle();
    clients.push_back(Open());
    EXPECT_EQ(accepted.size(), 64U);
    EXPECT_EQ(Effects(), "");
}

}  // namespace
