// SPDX-License-Identifier: Apache-2.0

#include <gtest/gtest.h>
#include <unistd.h>

#include "orlu/ConditionSemaphore.h"
#include "orlu/Limits.h"
#include "orlu/Network.h"
#include "orlu/UnixTransport.h"
#include "support/TemporaryRoot.h"

namespace {

using Orlu::SocketPtr;

/// The real transport, on a task of its own.
class UnixSocketTest : public testing::Test {
protected:
    ~UnixSocketTest() override
    {
        On([this] {
            m_client.reset();
            m_attempt.reset();
            m_server.reset();
            m_listener.reset();
        });
        m_task->Stop();
    }

    /// Runs `work` on the task and waits until it has returned.
    void On(const Orlu::Work& work)
    {
        ConditionSemaphore done(0);
        IL::BreakThread(
            [&work, &done] {
                work();
                done.Signal();
            },
            m_task.get());
        done.Wait();
    }

    bool Listen()
    {
        On([this] {
            m_listener = Orlu::Runtime().Transport().Listen(m_path, m_task->Queue(),
                                                            [this](SocketPtr socket) {
                                                                m_server = std::move(socket);
                                                                m_accepted.Signal();
                                                            });
        });
        return m_listener != nullptr;
    }

    SocketPtr Connect()
    {
        ConditionSemaphore done(0);
        On([this, &done] {
            m_attempt = Orlu::Runtime().Transport().Connect(m_path, m_task->Queue(),
                                                            [this, &done](SocketPtr socket) {
                                                                m_client = std::move(socket);
                                                                done.Signal();
                                                            });
        });
        done.Wait();
        return m_client;
    }

    const TemporaryRoot m_root;
    std::string m_path = m_root.Path() + "/run/orlu/Thing.sock";
    std::shared_ptr<NotifyTargetTaskIF> m_task = IL::CreateTask("sockets", "");
    ConditionSemaphore m_accepted{0};
    std::unique_ptr<Orlu::TransportHandle> m_listener;
    std::unique_ptr<Orlu::TransportHandle> m_attempt;
    SocketPtr m_server;
    SocketPtr m_client;
};

TEST(MayTalkTest, OnlyTheSameUserAndRootMayTalk)
{
    EXPECT_TRUE(Orlu::MayTalk(1000, 1000));
    EXPECT_TRUE(Orlu::MayTalk(1000, 0));
    EXPECT_FALSE(Orlu::MayTalk(1000, 1001));
    EXPECT_FALSE(Orlu::MayTalk(0, 1000));
}

TEST_F(UnixSocketTest, TheSocketIsForUsAloneAndGoesWithItsListener)
{
    EXPECT_EQ(Connect(), nullptr);
    ASSERT_TRUE(Listen());
    using std::filesystem::perms;
    EXPECT_EQ(std::filesystem::status(m_path).permissions(), perms(0600));
    EXPECT_EQ(std::filesystem::status(m_root.Path() + "/run/orlu").permissions(), perms(0700));
    ASSERT_NE(Connect(), nullptr);
    m_accepted.Wait();
    const auto self = "uid " + std::to_string(::geteuid()) + " pid " + std::to_string(::getpid());
    EXPECT_EQ(m_server->GetPeer().ToString(), self);
    EXPECT_EQ(m_client->GetPeer().ToString(), self);
    On([this] { m_listener.reset(); });
    EXPECT_FALSE(std::filesystem::exists(m_path));
}

TEST_F(UnixSocketTest, OnlyASocketWithoutAListenerIsReplaced)
{
    const auto kept = m_root.Path() + "/kept";
    ASSERT_TRUE(Listen());
    auto first = std::move(m_listener);
    EXPECT_FALSE(Listen());
    EXPECT_NE(Connect(), nullptr);

    // The socket file that a killed process leaves.
    std::filesystem::create_hard_link(m_path, kept);
    On([&first] { first.reset(); });
    std::filesystem::rename(kept, m_path);
    EXPECT_EQ(Connect(), nullptr);
    EXPECT_TRUE(Listen());
    EXPECT_NE(Connect(), nullptr);

    On([this] { m_listener.reset(); });
    std::ofstream(m_path) << "not a socket";
    EXPECT_FALSE(Listen());
    EXPECT_EQ(std::filesystem::file_size(m_path), 12U);
    m_path = m_root.Path() + "/" + std::string(200, 'x');
    EXPECT_FALSE(Listen());
    EXPECT_EQ(Connect(), nullptr);
}

TEST_F(UnixSocketTest, AllBytesArriveBeforeTheEndDoes)
{
    ASSERT_TRUE(Listen());
    ASSERT_NE(Connect(), nullptr);
    m_accepted.Wait();
    const std::string sent(Orlu::Limits::kSendQueueBytes, 'x');
    std::size_t received = 0;
    ConditionSemaphore arrived(0);
    ConditionSemaphore closed(0);
    On([this, &received, &arrived, &closed, &sent] {
        m_server->Receive(
            [&received, &arrived, &sent](std::span<const std::uint8_t> bytes) {
                received += bytes.size();
                if (received == sent.size()) {
                    arrived.Signal();
                }
            },
            [&closed] { closed.Signal(); });
    });
    On([this, &sent] { EXPECT_TRUE(m_client->Send(sent)); });
    arrived.Wait();
    On([this] { m_client->Close(); });
    closed.Wait();
    EXPECT_EQ(received, sent.size());
    On([this] { EXPECT_FALSE(m_server->Send("late")); });
}

TEST_F(UnixSocketTest, APeerThatStopsReadingOrHasGoneClosesTheSocketOnce)
{
    ASSERT_TRUE(Listen());
    for (const bool stopsReading : {true, false}) {
        ASSERT_NE(Connect(), nullptr);
        m_accepted.Wait();
        int calls = 0;
        ConditionSemaphore closed(0);
        ConditionSemaphore gone(0);
        On([this, &calls, &closed, &gone] {
            m_client->NotifyGone([&gone] { gone.Signal(); });
            m_client->Receive([](std::span<const std::uint8_t>) {},
                              [&calls, &closed] {
                                  ++calls;
                                  closed.Signal();
                              });
        });
        if (stopsReading) {
            On([this] {
                const std::string piece(Orlu::Limits::kFrameBytes, 'x');
                while (m_client->Send(piece)) {
                }
            });
        } else {
            On([this] {
                m_server->Close();
                m_client->Send("into nothing");
            });
        }
        closed.Wait();
        gone.Wait();
        On([this, &calls] {
            EXPECT_FALSE(m_client->Send("late"));
            EXPECT_EQ(calls, 1);
        });
    }
}

}  // namespace
