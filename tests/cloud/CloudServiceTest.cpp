// SPDX-License-Identifier: Apache-2.0

#include "cloud/CloudService.h"

#include <thread>

#include "OwnCatalogue.h"
#include "cloud/Base64.h"
#include "cloud/HttpServer.h"
#include "infrared/CodesetBinary.h"
#include "portico/Consumer.h"

namespace Cloud {
namespace {

std::string Head(const std::string& operation)
{
    return R"({"identity":"me","vector":"","operation":")" + operation + '"';
}

TEST(CloudServiceTest, AnswersEachRequestByItsRow)
{
    const struct {
        std::string request;
        unsigned http;
        std::string answer;
    } kRows[] = {
        {Head("brand") + "}", 400, ""},
        {R"({"operation":"version"})", 200, R"({"status":45})"},
        {Head("deviceTypes") + "}", 200, R"({"status":0,"types":["DVD","OTT","STB","TV"]})"},
        {Head("brands") + R"(,"type":"tv","prefix":"aU"})", 200,
         R"({"brands":["Aurelia","Aurora"],"status":0})"},
        {Head("brands") + R"(,"type":"TV","prefix":"Aurorae"})", 200, R"({"status":44})"},
        {Head("models") + R"(,"type":"TV","brand":"Boreal","hint":"nordlys 50","threshold":60})",
         200,
         R"({"models":[{"name":"Nordlys 50","value":100},{"name":"Nordlys 40","value":88}],"status":0})"},
        {Head("modelCodesets") + R"(,"type":"TV","brand":"aurora","model":"au-55q7"})", 200,
         R"({"codesets":["T2051","T0492"],"status":0})"},
        {Head("brandCodesets") + R"(,"type":"TV","brand":"Meridian"})", 200,
         R"({"codesets":["T0233","T0117","T0118","T0371"],"status":0})"},
        {Head("guidedTest") + R"(,"type":"TV","brand":"Quietone"})", 200, R"({"status":44})"},
        {Head("guidedTest") + R"(,"type":"TV","brand":"Aurelia"})", 200,
         R"({"codesets":[{"name":"T0117","signals":[[1,1],[6,2],[4,3],[8,4],[22,5]],"weight":2},)"
         R"({"name":"T0118","signals":[[1,1],[6,2],[4,3],[8,4],[22,6],[34,7]],"weight":1}],"status":0})"},
        {Head("codeset") + R"(,"name":"T9999"})", 200, R"({"status":44})"},
        {Head("discoverCec") + R"(,"vendorId":6013952,"logicalAddr":0,"osd":"TV"})", 200,
         R"({"brand":"Aurora","codeset":"T2051","flag":1,"status":0,"type":"TV"})"},
        {Head("discoverCec") + R"(,"vendorId":6013952,"logicalAddr":3,"osd":"au-box"})", 200,
         R"({"brand":"Aurora","codeset":"S1180","flag":1,"status":0,"type":"STB"})"},
        {Head("discoverCec") + R"(,"vendorId":6013956,"logicalAddr":0,"osd":""})", 200,
         R"({"brand":"Halcyon","codeset":"T9999","flag":0,"status":0,"type":"TV"})"},
        {Head("discoverEdid") + R"(,"edid":"AAAA"})", 200, R"({"status":45})"},
    };
    const auto catalogue = OpenOwn();
    CloudService service(*catalogue);
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.request);
        const CloudAnswer answer = service.Answer(row.request);
        EXPECT_EQ(answer.httpStatus, row.http);
        EXPECT_EQ(answer.body, row.answer);
    }
}

TEST(CloudServiceTest, KnowsADisplayByItsManufacturerAndItsName)
{
    const auto catalogue = OpenOwn();
    CloudService service(*catalogue);
    std::string edid(256, '\0');
    edid.replace(0, 8, "\0\xff\xff\xff\xff\xff\xff\0", 8);
    // Q, A, U
    edid[8] = static_cast<char>(17 << 2);
    edid[9] = static_cast<char>(1 << 5 | 21);
    const auto ask = [&service, &edid] {
        return service.Answer(Head("discoverEdid") + R"(,"edid":")" + ToBase64(edid) + "\"}").body;
    };
    EXPECT_EQ(ask(), R"({"brand":"Aurora","codeset":"T2051","flag":1,"status":0,"type":"TV"})");
    edid.replace(108, 18, std::string("\0\0\0\xfc\0Aurora One\n  ", 18));
    EXPECT_EQ(ask(), R"({"brand":"Aurora","codeset":"T0492","flag":1,"status":0,"type":"TV"})");
    edid[0] = 1;
    EXPECT_EQ(ask(), R"({"status":44})");
}

TEST(CloudServiceTest, GivesCodesetsUntilTheIdentitysQuotaIsUsedUp)
{
    const auto catalogue = OpenOwn();
    CloudService service(*catalogue);
    const std::string request = Head("codeset") + R"(,"name":"t2051"})";
    const std::string body = service.Answer(request).body;
    const std::string begin = R"({"data":")";
    ASSERT_TRUE(body.starts_with(begin)) << body;
    const auto data =
        FromBase64(body.substr(begin.size(), body.rfind(R"(","status":0)") - begin.size()));
    std::string why;
    EXPECT_TRUE(Lpm::CodesetBinary::Parse(
        std::vector<std::uint8_t>(data.value().begin(), data.value().end()), why))
        << why;
    for (std::int64_t i = 1; i < catalogue->DownloadQuota(); ++i) {
        ASSERT_EQ(service.Answer(request).body, body);
    }
    EXPECT_EQ(service.Answer(request).body, R"({"status":227})");
    EXPECT_EQ(
        service.Answer(R"({"identity":"you","vector":"","operation":"codeset","name":"T2051"})")
            .body,
        body);
}

TEST(CloudServiceTest, FollowsItsScriptEntryByEntry)
{
    ReplyScript script;
    std::string why;
    for (const char* bad : {"[]", R"({"replies":[{"operation":"x"}]})",
                            R"({"replies":[{"operation":"codeset","http":99}]})",
                            R"({"replies":[{"operation":"codeset","quota":1}]})"}) {
        EXPECT_FALSE(script.Load(bad, why)) << bad;
    }
    ASSERT_TRUE(script.Load(R"({"replies":[
        {"operation":"version","http":503,"times":1},
        {"operation":"version","quota":true,"times":1},
        {"operation":"version","delayMs":20,"times":1}]})",
                            why))
        << why;
    const auto catalogue = OpenOwn();
    CloudService service(*catalogue, script);
    const auto ask = [&service] {
        return service.Answer(Head("version") + "}");
    };
    EXPECT_EQ(ask().httpStatus, 503U);
    EXPECT_EQ(ask().body, R"({"status":227})");
    EXPECT_EQ(ask().delay, std::chrono::milliseconds(20));
    EXPECT_EQ(ask().delay.count(), 0);
}

TEST(CatalogueTest, RefusesAFileThatIsNone)
{
    const std::string path = BuildOwn();
    ASSERT_EQ(truncate(path.c_str(), 600), 0);
    std::string why;
    EXPECT_EQ(Catalogue::Open(path, why), nullptr);
    EXPECT_FALSE(why.empty());
    EXPECT_EQ(Catalogue::Open(OWN_SOURCE_FOLDER "/own.json", why), nullptr);
    EXPECT_EQ(why, "file is not a database");
    std::remove(path.c_str());
}

TEST(HttpServerTest, AnswersOnOneConnectionAndRefusesWhatIsNotTheProtocol)
{
    const auto catalogue = OpenOwn();
    CloudService service(*catalogue);
    boost::asio::io_context context;
    HttpServer server(context, service);
    std::string why;
    const auto port = server.Listen(0, why);
    ASSERT_TRUE(port) << why;
    EXPECT_FALSE(HttpServer(context, service).Listen(*port, why));
    std::thread thread([&context] { context.run(); });

    const PorticoApi::Consumer vanished(*port);
    PorticoApi::Consumer client(*port);
    const std::string good = R"({"operation":"version","identity":"me","vector":""})";
    const struct {
        const char* method;
        const char* path;
        std::string body;
        const char* answer;
    } rows[] = {
        {"POST", "/qsp/v1", good, "200 {"},
        {"POST", "/qsp/v1", "{", "400 "},
        {"POST", "/qsp/v2", good, "404 "},
        {"GET", "/qsp/v1", "", "405 "},
        {"POST", "/qsp/v1", std::string(kRequestBytes + 1, ' '), "413 "},
    };
    for (const auto& row : rows) {
        EXPECT_TRUE(client.Ask(row.method, row.path, row.body).starts_with(row.answer))
            << row.answer;
    }
    PorticoApi::Consumer confused(*port);
    confused.Send("nonsense\r\n\r\n");
    EXPECT_EQ(confused.Read().substr(0, 3), "400");
    context.stop();
    thread.join();
}

}  // namespace
}  // namespace Cloud
