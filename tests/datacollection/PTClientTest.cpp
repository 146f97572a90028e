// SPDX-License-Identifier: Apache-2.0

#include <filesystem>
#include <optional>

#include "CollectionFixture.h"
#include "datacollection/DataCollectionPTClient.h"
#include "datacollection/DataCollectionService.h"

namespace DataCollection {
namespace {

constexpr const char* kState = "/data/udc/state";
constexpr const char* kEvent =
    R"({"data":"{\"action\":\"ACTION_START\",\"deviceType\":\"DEVICE_TYPE_TV\",)"
    R"(\"deviceBrand\":\"Acme\",\"inputRoute\":\"\",\"databaseVer\":\"1.2\"}",)"
    R"("monoTime":"1000250","time":"2023-11-14T22:13:20.250000+00:00","type":"start"})";

class PTClientTest : public CollectionFixture {
protected:
    void Start()
    {
        Configure(R"({"name": "UDC", "pt_endpoint": "/data/udc", "message_q_depth": 5},
                     {"name": "UDC", "pt_endpoint": "/data/second"})");
        client = CreateUDCService(task.get(), nullptr);
        client->AddEnabledCallback(Noting("enabled"));
        client->AddEnabledCallback({});
        Run();
    }

    bool Send(const std::string& brand)
    {
        return client->SendData(Record(brand), "start", Noting("delivered"));
    }

    std::shared_ptr<DataCollectionClientIF> client;
};

TEST_F(PTClientTest, SendsWhileTheServiceSaysThatItTakesEvents)
{
    Start();
    EXPECT_EQ(portico.Registrations(), "interest /data/udc/state\nnotification /data/udc/state\n");
    EXPECT_FALSE(Send("Acme"));
    portico.Put("/data/udc", R"({"delivered": true})");
    portico.Put(kState, R"({"ServiceStatus": "DATACOLLECTION_ENABLE"})");
    EXPECT_EQ(Run(), "+0 portico GET /data/udc/state\n+0 enabled 1\n");

    runtime.Advance(250);
    EXPECT_TRUE(Send("Acme"));
    EXPECT_EQ(Run(), std::string("+250 portico POST /data/udc ") + kEvent + "\n+250 delivered 1\n");

    portico.Notify(kState, R"({"ServiceStatus": "DATACOLLECTION_ENABLE"})");
    portico.Notify(kState, R"({"ServiceStatus": 7})");
    portico.Notify(kState, "[]");
    EXPECT_EQ(Run(), "+0 enabled 0\n");
    EXPECT_FALSE(Send("Acme"));
    EXPECT_EQ(Run(), "");
}

TEST_F(PTClientTest, CountsAServiceThatCannotBeAskedAsEnabled)
{
    Start();
    portico.Fail(kState, R"({"code": 504, "message": "no answer"})");
    EXPECT_EQ(Run(), "+0 portico GET /data/udc/state\n+0 enabled 1\n");
    EXPECT_TRUE(
        Logged("1 Get State Failure: (no answer), Setting DataCollectionService State to "
               "Enable"));
    EXPECT_TRUE(client->IsDataCollectionServiceUp());

    TakeLog();
    portico.Remove(kState);
    EXPECT_EQ(Run(), "");
    EXPECT_EQ(TakeLog(), "1 PorticoClient - RegisterEndpointsOfInterest not ready\n");
    EXPECT_FALSE(client->IsDataCollectionServiceUp());
    portico.Put(kState, "{}");
    EXPECT_EQ(Run(), "+0 portico GET /data/udc/state\n");
}

TEST_F(PTClientTest, LosesWhatCannotBePostedOrRendered)
{
    Start();
    portico.Fail(kState, "{}");
    Run();
    portico.Fail("/data/udc", R"({"message": "full"})");
    TakeLog();
    EXPECT_TRUE(client->SendData(Record("Acme"), "start"));
    EXPECT_TRUE(Send("Acme"));
    runtime.RunUntilIdle();
    EXPECT_TRUE(effects.Take().ends_with("\n+0 delivered 0\n"));
    EXPECT_TRUE(Logged("4 PTClient Client callback error: full"));
    EXPECT_TRUE(
        Logged("4 Default response From DataCollectionService : start, delivery status = "
               "not delivered"));

    portico.Put("/data/udc", R"({"delivered": false})");
    EXPECT_TRUE(Send("Acme"));
    runtime.RunUntilIdle();
    EXPECT_TRUE(effects.Take().ends_with("\n+0 delivered 0\n"));

    TakeLog();
    EXPECT_FALSE(Send("\xff"));
    EXPECT_FALSE(client->SendData(nullptr, "start"));
    EXPECT_EQ(Run(), "");
    EXPECT_TRUE(
        Logged("1 Exception ProtoToMarkup::MarkupError: ciStart: deviceBrand is not "
               "UTF-8"));
    EXPECT_TRUE(Logged("4 SendData badly formatted event, event not sent."));
}

TEST_F(PTClientTest, AConfigurationThatSaysNothingOfTheTypeLeavesItSilent)
{
    const struct {
        const char* name;
        std::optional<std::string> file;
        std::string log;
    } rows[] = {
        {"missing", std::nullopt, ""},
        {"another type", R"({"properties": [{"name": "NDC"}]})", "3 Inserting into Map NDC\n"},
        {"wrong type", R"({"properties": {"name": 1}})",
         "1 ReadConfigFileOnce:: Exception ProtoToMarkup::MarkupError: DataCollectionConfig: "},
        {"too large", std::string(2 << 20, ' '),
         "1 ERROR: file read error on file: /opt/Orlu/etc/DataCollection.json with error: "},
    };
    DPrint::SetLevel(3);
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        if (row.file) {
            root.Write("/opt/Orlu/etc/DataCollection.json", *row.file);
        }
        DataCollectionClient::Reload();
        TakeLog();
        client = CreateUDCService(task.get(), nullptr);
        const auto log = TakeLog();
        EXPECT_TRUE(log.starts_with(row.log)) << log;
        EXPECT_TRUE(log.ends_with("3 DataCollectionPTClient(UDC)\n1 Key not found in MAP\n"))
            << log;
        EXPECT_FALSE(Send("Acme"));
    }
    EXPECT_EQ(portico.Registrations(), "");
}

TEST_F(PTClientTest, MakesATaskAndAClientOfItsOwn)
{
    Configure(R"({"name": "NDC", "pt_endpoint": "/data/ndc"})");
    const auto shared = PorticoClient::Create("shared", "localhost", 1, "", "", {}, {}, {});
    const auto ndc = CreateNDCService(nullptr, shared);
    EXPECT_EQ(portico.Clients(), "shared localhost:1\n");
    portico.Fail("/data/ndc/state", "{}");
    Run();
    EXPECT_TRUE(ndc->IsDataCollectionServiceUp());

    root.Write("/opt/Orlu/etc/DataCollection.json", "{}");
    CreateUDCService(task.get(), nullptr);
    const auto ndcAgain = CreateNDCService(task.get(), nullptr);  // the file is read once only
    Run();
    EXPECT_TRUE(ndcAgain->IsDataCollectionServiceUp());
    EXPECT_THAT(portico.Clients(),
                testing::MatchesRegex("shared localhost:1\n"
                                      "datacollection[0-9]+-[0-9]+ localhost:8084\n"
                                      "datacollection[0-9]+-[0-9]+ localhost:8084\n"));
}

}  // namespace
}  // namespace DataCollection
