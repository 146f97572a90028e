// SPDX-License-Identifier: Apache-2.0

#include "ApiFixture.h"
#include "ProtoBufs/DataCollection.pb.h"
#include "ProtoBufs/NetworkStatus.pb.h"
#include "orlu/Limits.h"
#include "portico/PorticoClient.h"

#include <condition_variable>
#include <deque>
#include <mutex>

namespace PorticoApi {
namespace {

using NetManager::Protobuf::NetworkStatus;
constexpr auto kLocal = Portico::EndpointScope::kLocal;
constexpr const char* kStatus = "/network/status";

/// The events on the client's side, in order.
class Events {
public:
    void Add(const std::string& event)
    {
        const std::lock_guard lock(m_mutex);
        m_events.push_back(event);
        m_changed.notify_one();
    }
    std::string Next()
    {
        std::unique_lock lock(m_mutex);
        m_changed.wait(lock, [this] { return !m_events.empty(); });
        std::string event = m_events.front();
        m_events.pop_front();
        return event;
    }

private:
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::deque<std::string> m_events;
};

using Paths = PorticoClientIF::Paths;

class PorticoClientTest : public ApiFixture {
protected:
    ~PorticoClientTest() override
    {
        m_client.reset();
        m_task->Stop();
        m_task->Queue()->Join();
    }

    /// The client's link runs on the task, or on a thread of its own if it reports the connection.
    void MakeClient(const PorticoClient::OnConnected& connected = {})
    {
        m_client =
            PorticoClient::Create("tested", "localhost", Port(), "meridia", "", connected, {}, {});
    }
    template <class What>
    AsyncCallback<What> Note(const std::string& word)
    {
        return {[events = m_events, word](const What& what) {
                    if constexpr (std::is_same_v<What, Paths>) {
                        events->Add(word + " " + what.at(0));
                    } else {
                        events->Add(word + " " + what.ShortDebugString());
                    }
                },
                m_task.get()};
    }
    void Get(const std::string& path)
    {
        m_client->SendGet<NetworkStatus>(path, Note<NetworkStatus>("got"),
                                         Note<Portico::Error>("error"), 1.0);
    }

    std::shared_ptr<Events> m_events = std::make_shared<Events>();
    std::shared_ptr<NotifyTargetTaskIF> m_task = IL::CreateTask("tested", "");
    std::shared_ptr<PorticoClientIF> m_client;
};

TEST_F(PorticoClientTest, KeepsItsRegistrationsOverALostLink)
{
    Start();
    Stop();
    MakeClient();
    m_client->RegisterNotification<NetworkStatus>(kStatus, Note<NetworkStatus>("old"), kLocal, 1.0);
    m_client->RegisterNotification<NetworkStatus>(kStatus, Note<NetworkStatus>("told"), kLocal,
                                                  1.0);
    m_client->RegisterPut<NetworkStatus, NetworkStatus>(
        "/own",
        {[](const NetworkStatus& request, const Callback<NetworkStatus>& answer,
            const PorticoClientIF::OnError& error) {
             if (request.has_isprimaryup() && request.isprimaryup()) {
                 answer(request);
                 answer(request);
             } else if (request.has_isprimaryup()) {
                 error(Portico::ParseError("refused"));
             }
         },
         m_task.get()},
        kLocal, 1.0, "trellan", 0);
    // Registered last: once it answers, the registrations before it are known.
    m_client->RegisterEndpointsOfInterest({kStatus}, Note<Paths>("ready"), Note<Paths>("notReady"));
    Get(kStatus);
    for (int round = 0; round < 2; ++round) {
        Start();
        EXPECT_EQ(m_events->Next(), "ready /network/status");
        if (round == 0) {
            EXPECT_EQ(m_events->Next(), "got isPrimaryUp: true");
        }
        Consumer consumer(Port());
        EXPECT_EQ(consumer.Ask("PUT", "/own", "{\"isPrimaryUp\":true}"),
                  "200 {\"isPrimaryUp\":true}");
        EXPECT_EQ(consumer.Ask("PUT", "/own", "{\"isPrimaryUp\":false}").substr(0, 3), "400");
        EXPECT_EQ(consumer.Ask("PUT", "/own", "{}").substr(0, 3), "500");
        const std::string bad = consumer.Ask("PUT", "/own", "{\"isPrimaryUp\":7}");
        EXPECT_TRUE(bad.starts_with(R"(400 {"code":0,"subcode":2005,)")) << bad;
        consumer.Ask("DELETE", kStatus);
        EXPECT_EQ(m_events->Next(), "notReady /network/status");
        consumer.Ask("PUT", kStatus, "{\"isPrimaryUp\":false}");
        EXPECT_EQ(m_events->Next(), "ready /network/status");
        EXPECT_EQ(m_events->Next(), "told isPrimaryUp: false");
        Stop();
        EXPECT_EQ(m_events->Next(), "notReady /network/status");
    }
}

TEST_F(PorticoClientTest, EveryRequestEndsOnce)
{
    Start();
    MakeClient([events = m_events] { events->Add("connected"); });
    EXPECT_EQ(m_events->Next(), "connected");
    Get("/nothing");
    EXPECT_TRUE(m_events->Next().starts_with("error guid: \"1\" code: 404"));
    Get("no path");
    EXPECT_TRUE(m_events->Next().starts_with("error guid: \"1\" code: 404"));
    m_client->SendPost<DataCollection::EventStatus>("/payload/publish", NetworkStatus(),
                                                    Note<DataCollection::EventStatus>("got"),
                                                    Note<Portico::Error>("error"), 2.0);
    EXPECT_TRUE(m_events->Next().starts_with("error guid: \"1\" code: 0 subcode: 2005"));
    Get("/system/info");
    EXPECT_EQ(m_events->Next(), "got ");

    Service silent(Port());
    silent.Send(R"({"type":"register","id":1,"method":"GET","path":"/silent"})");
    silent.Send(R"({"type":"request","id":2,"method":"GET","path":"/nothing"})");
    silent.Read();
    Get("/silent");
    silent.Read();
    Stop();
    EXPECT_TRUE(m_events->Next().starts_with("error guid: \"1\" code: 503"));
    for (std::size_t i = 0; i <= Orlu::Limits::kPendingRequests; ++i) {
        Get(kStatus);
    }
    EXPECT_TRUE(m_events->Next().find("too many") != std::string::npos);
    m_client.reset();
    for (std::size_t i = 0; i < Orlu::Limits::kPendingRequests; ++i) {
        EXPECT_TRUE(m_events->Next().starts_with("error guid: \"1\" code: 503"));
    }
}

TEST_F(PorticoClientTest, TakesItsPortFromTheEnvironmentAndNoOtherHost)
{
    Start();
    setenv("ORLU_PORTICO_PORT", std::to_string(Port()).c_str(), 1);
    m_client = PorticoClient::Create("tested", "127.0.0.1", 1, "", "",
                                     [events = m_events] { events->Add("connected"); }, {}, {});
    unsetenv("ORLU_PORTICO_PORT");
    EXPECT_EQ(m_events->Next(), "connected");
    EXPECT_FALSE(
        PorticoClient::Create("tested", "elsewhere.example", 1, "", "", {},
                              {[events = m_events](const std::string& host, PORTICO_CLIENT_ERRORS) {
                                   events->Add("never " + host);
                               },
                               m_task.get()},
                              {}));
    EXPECT_EQ(m_events->Next(), "never elsewhere.example");
}

}  // namespace
}  // namespace PorticoApi
