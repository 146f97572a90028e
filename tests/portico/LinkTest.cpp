// SPDX-License-Identifier: Apache-2.0

#include "ApiFixture.h"

namespace PorticoApi {
namespace {

const std::string kRegister = R"({"type":"register","id":1,"method":"PUT","path":"/own"})";

class LinkTest : public ApiFixture {
protected:
    LinkTest() { Start(); }
};

TEST_F(LinkTest, CarriesRequestsToTheServiceAndItsAnswersBack)
{
    Service service(Port());
    service.Settle(kRegister);
    Consumer first(Port());
    Consumer second(Port());
    first.Request("PUT", "/own", "{\"a\":1}");
    EXPECT_EQ(service.Read(),
              "{\"type\":\"request\",\"id\":1,\"method\":\"PUT\",\"path\":\"/own\"}\n{\"a\":1}");
    second.Request("PUT", "/own", "{\"a\":2}");
    EXPECT_EQ(service.Read(),
              "{\"type\":\"request\",\"id\":2,\"method\":\"PUT\",\"path\":\"/own\"}\n{\"a\":2}");
    service.Send("{\"type\":\"answer\",\"id\":2}\n{\"b\":2}");
    EXPECT_EQ(second.Read(), "200 {\"b\":2}");
    service.Send("{\"type\":\"answer\",\"id\":2}\n{\"b\":3}");
    service.Send("{\"type\":\"answer\",\"id\":1,\"error\":true}\n{\"subcode\":2005}");
    EXPECT_EQ(first.Read(), "400 {\"subcode\":2005}");
    EXPECT_EQ(first.Ask("GET", "/own").substr(0, 8), "405 PUT ");
    for (const auto& [error, status] :
         {std::pair{"{\"code\":409}", "409 {\"code\":409}"},
          std::pair{"{\"code\":7}", "500 {\"code\":7}"}, std::pair{"no JSON", "500 {\"guid\""}}) {
        first.Request("PUT", "/own", "{}");
        const auto id = service.Read().substr(23, 1);
        service.Send("{\"type\":\"answer\",\"id\":" + id + ",\"error\":true}\n" + error);
        EXPECT_TRUE(first.Read().starts_with(status));
    }
}

TEST_F(LinkTest, PassesChangesOfAServicesOwnResourcesToAllSubscribers)
{
    Consumer events(Port());
    events.Send("GET /events HTTP/1.1\r\nHost: localhost:" + std::to_string(Port()) + "\r\n\r\n");
    EXPECT_TRUE(events.ReadTo("\r\n\r\n").starts_with("HTTP/1.1 200 "));
    {
        Service service(Port());
        service.Send(kRegister);
        const std::string changed = R"({"type":"changed","path":")";
        service.Send(changed + "/other\"}\n{\"a\":0}");
        service.Send(changed + "/network/status\"}\n{\"a\":0}");
        service.Send(changed + "/own\"}\n{\"a\":\n0}");
        service.Send(changed + "/own\"}\nno JSON");
        service.Send(changed + "/own\"}\n{\"a\":1}");
        EXPECT_EQ(events.ReadTo("\n\n"), "data: {\"path\":\"/own\",\"body\":{\"a\":1}}\n\n");
    }
    EXPECT_EQ(events.ReadTo("\n\n"), "data: {\"path\":\"/own\",\"body\":null}\n\n");
}

TEST_F(LinkTest, TheLaterServiceServesAndNoneTakesTheProductsOwn)
{
    Service earlier(Port());
    earlier.Settle(kRegister);
    Service later(Port());
    later.Send(R"({"type":"register","id":1,"method":"GET","path":"/network/status"})");
    later.Settle(kRegister);
    earlier.Settle(R"({"type":"withdraw","id":1})");
    Consumer consumer(Port());
    consumer.Request("PUT", "/own", "{}");
    EXPECT_TRUE(later.Read().starts_with(R"({"type":"request","id":1)"));
    EXPECT_EQ(Consumer(Port()).Ask("GET", "/network/status"), R"(200 {"isPrimaryUp":true})");
}

TEST_F(LinkTest, PendingRequestsEndWhenTheServiceLeavesOrDoesNotAnswer)
{
    Stop();
    m_timeouts.answer = std::chrono::milliseconds(50);
    Start();
    Consumer consumer(Port());
    {
        Service service(Port());
        service.Settle(kRegister);
        {
            Consumer gone(Port());
            gone.Request("PUT", "/own", "{}");
            service.Read();
        }
        consumer.Request("PUT", "/own", "{}");
        EXPECT_EQ(consumer.Read().substr(0, 3), "504");
        service.Read();
        service.Send("{\"type\":\"answer\",\"id\":1}\n{}");
        service.Settle("{\"type\":\"answer\",\"id\":2}\n{}");
        consumer.Request("PUT", "/own", "{}");
        service.Read();
    }
    EXPECT_EQ(consumer.Read().substr(0, 3), "503");
    EXPECT_EQ(consumer.Ask("PUT", "/own", "{}").substr(0, 3), "503");
}

TEST_F(LinkTest, ConsumersThatLeaveBeforeTheirAnswerLeaveNothingBehind)
{
    Service service(Port());
    service.Settle(kRegister);
    {
        std::vector<std::unique_ptr<Consumer>> crowd;
        for (int i = 0; i < 63; ++i) {
            crowd.push_back(std::make_unique<Consumer>(Port()));
            crowd.back()->Request("PUT", "/own", "{}");
            service.Read();
        }
        EXPECT_EQ(Consumer(Port()).Ask("GET", "/network/status"), "closed");
    }
    std::string answer = "closed";
    while (answer == "closed") {
        answer = Consumer(Port()).Ask("GET", "/network/status");
    }
    EXPECT_EQ(answer, R"(200 {"isPrimaryUp":true})");
    service.Settle("{\"type\":\"answer\",\"id\":1}\n{}");
}

TEST_F(LinkTest, DisconnectsAConsumerThatDoesNotReadAndServesTheOthers)
{
    Service service(Port());
    service.Settle(R"({"type":"subscribe","id":4,"path":"/system/info"})");
    Consumer listener(Port());
    listener.Request("GET", "/events");
    listener.ReadTo("\r\n\r\n");
    Consumer consumer(Port());
    const std::string value = R"({"name":")" + std::string(60'000, 'n') + "\"}";
    for (int i = 0; i < 400; ++i) {
        EXPECT_EQ(consumer.Ask("PUT", "/system/info", value).size(), 4 + value.size());
    }
    EXPECT_LT(listener.ReadTo("never").size(), 400 * value.size());
    int read = 0;
    while (service.Read() != "closed") {
        ++read;
    }
    EXPECT_LT(read, 400);
}

TEST_F(LinkTest, EndsTheLinkOfAServiceThatBreaksTheProtocol)
{
    std::string flood = "\"/x\"";
    for (int i = 0; i < 300; ++i) {
        flood += ",\"/x" + std::to_string(i) + "\"";
    }
    for (const std::string& message :
         {std::string("garbage"), std::string("\xff"),
          std::string(R"({"type":"hello","name":"again"})"),
          std::string(R"({"type":"ready","id":1})"), std::string(2'000'000, ' '),
          R"({"type":"interest","id":1,"paths":[)" + flood + "]}"}) {
        Service service(Port());
        service.Send(message);
        EXPECT_EQ(service.Read(), "closed") << message.substr(0, 40);
    }
    Service many(Port());
    for (int i = 0; i < 257; ++i) {
        many.Send(R"({"type":"subscribe","id":1,"path":"/x"})");
    }
    EXPECT_EQ(many.Read(), "closed");
    Service binary(Port());
    binary.Send(kRegister, true);
    EXPECT_EQ(binary.Read(), "closed");
}

}  // namespace
}  // namespace PorticoApi
