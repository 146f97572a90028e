// SPDX-License-Identifier: Apache-2.0

#include "ApiFixture.h"

#include <filesystem>

namespace PorticoApi {
namespace {

constexpr const char* kStatus = "/network/status";

class ConsumerTest : public ApiFixture {
protected:
    ConsumerTest()
    {
        m_root.Write("/opt/Orlu/etc/DataCollection.json",
                     R"({"properties": [{"name": "UDC", "pt_endpoint": "/collect"}]})");
        m_root.Write("/web/index.html", "<p>page</p>");
        m_root.Write("/web/js/app.js", "run()");
        m_root.Write("/web/.secret", "x");
        m_root.Write("/secret", "x");
        m_root.Write("/mnt/nv/payload/a", "x");
        for (const char* link : {"/web/linked", "/mnt/nv/payload/linked"}) {
            std::filesystem::create_symlink(m_root.Path() + "/secret", m_root.Path() + link);
        }
        std::filesystem::create_symlink(m_root.Path(), m_root.Path() + "/web/up");
        m_root.Write("/resources", R"({"/system/sources": null})");
        m_options.web = m_root.Path() + "/web";
        m_options.resources = m_root.Path() + "/resources";
        m_options.events = m_root.Path() + "/events";
    }
};

TEST_F(ConsumerTest, AnswersEachRequestOfOneConnectionByItsKind)
{
    Start();
    struct {
        const char* method;
        const char* path;
        const char* body;
        const char* answer;  ///< The beginning of the answer.
    } const rows[] = {
        {"GET", kStatus, "", R"(200 {"isPrimaryUp":true})"},
        {"GET", "/network/status?x=1", "", R"(200 {"isPrimaryUp":true})"},
        {"PUT", kStatus, R"({ "isPrimaryUp": false, "more": [1] })",
         R"(200 {"isPrimaryUp":false,"more":[1]})"},
        {"GET", kStatus, "", R"(200 {"isPrimaryUp":false,"more":[1]})"},
        {"PUT", kStatus, R"({"isPrimaryUp": "maybe"})",
         R"(400 {"guid":"1","code":0,"subcode":2005,)"},
        {"PUT", kStatus, "{", R"(400 {"guid":"1","code":0,"subcode":2005,)"},
        {"PUT", kStatus, "{\"x\": \"\xff\"}", R"(400 {"guid":"1","code":0,"subcode":2005,)"},
        {"GET", kStatus, "", R"(200 {"isPrimaryUp":false,"more":[1]})"},
        {"DELETE", kStatus, "", "200 {}"},
        {"GET", kStatus, "", R"(503 {"guid":"1","code":503,"subcode":0,)"},
        {"POST", kStatus, "{}", "405 DELETE, GET, PUT {"},
        {"GET", "/system/sources", "", "503 "},
        {"PUT", "/system/sources", R"({"sources": [{"sourceName": "A", "status": "READY"}]})",
         "200 "},
        {"GET", "/nothing", "", "404 "},
        {"POST", "/events", "{}", "405 GET "},
        {"GET", "/link", "", "400 "},
        {"GET", "/", "", "200 <p>page</p>"},
        {"GET", "/js/app.js", "", "200 run()"},
        {"GET", "/.secret", "", "404 "},
        {"GET", "/linked", "", "404 "},
        {"GET", "/up/secret", "", "404 "},
        {"GET", "/../secret", "", "404 "},
        {"GET", "/js/%2e%2e/index.html", "", "404 "},
        {"POST", "/payload/publish", R"({"fileName":"absent","lifeSpanSec":1})", "404 "},
        {"POST", "/payload/publish", R"({"fileName":"linked","lifeSpanSec":1})", "404 "},
        {"POST", "/payload/publish", R"({"fileName":"../../../secret","lifeSpanSec":1})", "404 "},
        {"POST", "/payload/publish", R"({"fileName":"..","lifeSpanSec":1})", "404 "},
        {"POST", "/payload/publish", R"({"fileName":"a"})", "400 "},
        {"POST", "/payload/publish", R"({"fileName":"a","lifeSpanSec":0})", "400 "},
        {"POST", "/payload/publish", R"({"fileName":"a","lifeSpanSec":"NaN"})", "400 "},
        {"POST", "/collect", R"({"type": "a", "data": "{\"x\":1}"})", R"(200 {"delivered":true})"},
        {"PUT", "/collect/state", R"({"ServiceStatus":"DATACOLLECTION_DISABLE"})", "200 "},
        {"POST", "/collect", R"({"type": "b"})", R"(200 {"delivered":false})"},
        {"DELETE", "/collect/state", "", "200 "},
        {"POST", "/collect", R"({"type": "c"})", "503 "},
    };
    Consumer consumer(Port());
    for (const auto& row : rows) {
        const std::string answer = consumer.Ask(row.method, row.path, row.body);
        EXPECT_TRUE(answer.starts_with(row.answer)) << row.method << row.path << ": " << answer;
    }
    EXPECT_EQ(m_root.Read("/events"), "{\"data\":\"{\\\"x\\\":1}\",\"type\":\"a\"}\n");
    const std::string deep(64, '[');
    EXPECT_EQ(consumer.Ask("PUT", kStatus, "{\"x\":" + deep).substr(0, 3), "400");
    EXPECT_EQ(consumer.Ask("PUT", kStatus, std::string(65536, ' ')).substr(0, 3), "400");
    EXPECT_EQ(consumer.Ask("PUT", kStatus, std::string(65537, ' ')).substr(0, 3), "413");
    EXPECT_EQ(consumer.Read(), "closed");
}

TEST_F(ConsumerTest, RefusesWhatIsNoRequestOfOurs)
{
    Start();
    const std::string port = std::to_string(Port());
    const std::string get = "GET /system/info HTTP/1.1\r\n";
    const std::string host = "Host: localhost:" + port + "\r\n";
    const std::pair<std::string, const char*> rows[] = {
        {get + host + "\r\n", "200"},
        {get + "Host: [::1]:" + port + "\r\n\r\n", "200"},
        {get + "\r\n", "403"},
        {get + "Host: localhost\r\n\r\n", "403"},
        {get + "Host: evil.example:" + port + "\r\n\r\n", "403"},
        {get + host + host + "\r\n", "403"},
        {get + host + "Origin: http://evil.example\r\n\r\n", "403"},
        {get + host + "Origin: https://localhost:" + port + "\r\n\r\n", "403"},
        {"PUT /network/status HTTP/1.1\r\n" + host +
             "Content-Type: text/plain\r\nContent-Length: 2\r\n\r\n{}",
         "415"},
        {"PUT /network/status HTTP/1.1\r\n" + host +
             "Content-Type: application/json; charset=utf-8\r\nExpect: 100-continue\r\n"
             "Content-Length: 2\r\n\r\n{}",
         "100"},
        {get + host + "X: " + std::string(20000, 'x') + "\r\n\r\n", "400"},
        {"nonsense\r\n\r\n", "400"},
        {"PUT /network/status HTTP/1.1\r\n" + host + "Content-Length: 1e9\r\n\r\n", "400"},
        {"GET /link HTTP/1.1\r\n" + host + "Origin: http://evil.example\r\n" +
             "Connection: upgrade\r\nUpgrade: websocket\r\nSec-WebSocket-Version: 13\r\n"
             "Sec-WebSocket-Key: AAAAAAAAAAAAAAAAAAAAAA==\r\n\r\n",
         "403"},
    };
    for (const auto& [bytes, status] : rows) {
        Consumer consumer(Port());
        consumer.Send(bytes);
        EXPECT_EQ(consumer.Read().substr(0, 3), status) << bytes.substr(0, 200);
    }
}

TEST_F(ConsumerTest, TellsTheConsumersOfEventsOfEveryChange)
{
    Start();
    Consumer listener(Port());
    listener.Request("GET", "/events");
    EXPECT_NE(listener.ReadTo("\r\n\r\n").find("text/event-stream"), std::string::npos);
    Consumer consumer(Port());
    consumer.Ask("PUT", kStatus, R"({"isPrimaryUp":false})");
    EXPECT_EQ(listener.ReadTo("\n\n"),
              "data: {\"path\":\"/network/status\",\"body\":{\"isPrimaryUp\":false}}\n\n");
    consumer.Ask("DELETE", kStatus);
    EXPECT_EQ(listener.ReadTo("\n\n"), "data: {\"path\":\"/network/status\",\"body\":null}\n\n");
}

TEST_F(ConsumerTest, PublishesAFileThatMayBeRemovedAtOnce)
{
    m_root.Write("/mnt/nv/payload/brandList0", R"({"brandList":["A"]})");
    Start();
    Consumer consumer(Port());
    const std::string answer =
        consumer.Ask("POST", "/payload/publish", R"({"fileName":"brandList0","lifeSpanSec":10})");
    const std::string url = "/payload/files/brandList0";
    EXPECT_TRUE(answer.starts_with("200 {\"url\":\"http://127.0.0.1:" + std::to_string(Port()) +
                                   url + "\",\"deadline\":\"20"))
        << answer;
    std::filesystem::remove(m_root.Path() + "/mnt/nv/payload/brandList0");
    EXPECT_EQ(consumer.Ask("GET", url), R"(200 {"brandList":["A"]})");

    m_root.Write("/mnt/nv/payload/short", "x");
    const char* const brief = R"({"fileName":"short","lifeSpanSec":0.000001})";
    EXPECT_EQ(consumer.Ask("POST", "/payload/publish", brief).substr(0, 3), "200");
    EXPECT_EQ(consumer.Ask("GET", "/payload/files/short").substr(0, 3), "404");
    consumer.Ask("DELETE", "/payload/cfg");
    EXPECT_EQ(consumer.Ask("POST", "/payload/publish", brief).substr(0, 3), "503");
}

TEST_F(ConsumerTest, ClosesAnIdleConnection)
{
    m_timeouts.request = std::chrono::milliseconds(100);
    Start();
    Consumer half(Port());
    half.Send("GET /system/in");
    EXPECT_EQ(half.Read(), "closed");
    Consumer body(Port());
    body.Send("PUT /network/status HTTP/1.1\r\nHost: localhost:" + std::to_string(Port()) +
              "\r\nContent-Length: 9\r\n\r\n{");
    EXPECT_EQ(body.Read(), "closed");
    EXPECT_EQ(Consumer(Port()).Ask("GET", "/").substr(0, 3), "200");
}

TEST_F(ConsumerTest, RefusesFirstValuesThatItCannotTake)
{
    boost::asio::io_context context;
    for (const char* text : {"", "[]", R"({"/nothing": {}})", R"({"/network/status": 1})",
                             R"({"/network/status": {"isPrimaryUp": 7}})"}) {
        m_root.Write("/resources", text);
        unsetenv("ORLU_ROOT");
        Server server(context, m_options, m_root.Path(), {});
        std::string why;
        EXPECT_FALSE(server.Start(why)) << text;
        EXPECT_TRUE(why.starts_with(m_options.resources + ": ")) << why;
    }
}

}  // namespace
}  // namespace PorticoApi
