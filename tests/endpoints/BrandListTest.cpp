// SPDX-License-Identifier: Apache-2.0

#include <filesystem>

#include "endpoints/EndpointsFixture.h"

namespace TrellanService {
namespace {

constexpr const char* kBrandList = "/remote/integration/brandList";
constexpr const char* kPublish = "/payload/publish";
constexpr const char* kRequest = R"({"deviceType":"DEVICE_TYPE_TV","filter":"z"})";
constexpr const char* kRefused =
    "+0 answer POST /remote/integration/brandList {\"url\":\"\",\"deadline\":\"\"}\n";
/// The library calls of the engine for the letter z.
constexpr const char* kWalk =
    "+0 qsp get_lookup_session /opt/Orlu/etc/UEI/WRLD_linux.conf 2\n"
    "+0 qsp retrieve_device_types_total\n"
    "+0 qsp retrieve_brands_total TV z 1\n"
    "+0 qsp get_brand_name 0\n";
constexpr const char* kWalkAgain =
    "+0 qsp retrieve_brands_total TV z 1\n"
    "+0 qsp get_brand_name 0\n";

std::string PublishOf(const std::string& file)
{
    return "+0 portico POST /payload/publish {\"fileName\":\"" + file + "\",\"lifeSpanSec\":10}\n";
}

class BrandList : public EndpointsFixture {
protected:
    BrandList()
    {
        m_world.qsp.lists = {{"get_device_type_name", {"TV"}}, {"get_brand_name", {"Zed"}}};
        m_world.portico.Put(kPublish, R"({"url":"http://here/1","deadline":"soon"})");
    }

    std::string PostList(const std::string& body = kRequest) { return Post(kBrandList, body); }
    std::string Staged(const std::string& name)
    {
        return m_world.root.Read(std::string(World::kStaging) + "/" + name);
    }
    bool IsStagingEmpty()
    {
        return std::filesystem::is_empty(m_world.root.Path() + World::kStaging);
    }
};

TEST_F(BrandList, PublishesAFileAndDeletesIt)
{
    ConnectCloud();
    m_world.portico.Hold();
    EXPECT_EQ(PostList(), kWalk + PublishOf("brandList0"));
    EXPECT_EQ(Staged("brandList0"), R"({"brandList":["Zed"]})");
    Log();
    m_world.portico.Release();
    EXPECT_EQ(Effects(),
              "+0 answer POST /remote/integration/brandList "
              "{\"url\":\"http://here/1\",\"deadline\":\"soon\"}\n");
    EXPECT_EQ(Log(),
              "3 PayloadPublish response received\n"
              "3 Deleting payload staging file, /mnt/nv/payload/brandList0\n");

    m_world.qsp.lists["get_brand_name"].clear();
    m_world.portico.Put(kPublish, R"({"url":"http://here/2"})");
    EXPECT_EQ(PostList(R"({"deviceType":"DEVICE_TYPE_TV","filter":"z","more":1})"),
              "+0 qsp retrieve_brands_total TV z 1\n" + PublishOf("brandList1") +
                  "+0 answer POST /remote/integration/brandList {\"url\":\"http://here/2\"}\n");
    EXPECT_TRUE(IsStagingEmpty());
}

TEST_F(BrandList, RefusesWithEmptyTexts)
{
    EXPECT_EQ(PostList("{}"), kRefused);
    EXPECT_EQ(Log(), "2 Brandlist request with no UEI session established\n");
    ConnectCloud();
    for (const char* body : {"{}", R"({"filter":"z"})", R"({"deviceType":"DEVICE_TYPE_TV"})"}) {
        EXPECT_EQ(PostList(body), kRefused);
    }
    EXPECT_EQ(Log(), "");
    EXPECT_EQ(PostList(R"({"deviceType":"","filter":""})"), kRefused);
    EXPECT_EQ(Log(), "3 Setting OSM InactvityTimer\n");
    EXPECT_TRUE(
        PostList(R"({"deviceType":"DEVICE_TYPE_TV","filter":7})").find("\"subcode\":2005") !=
        std::string::npos);
    EXPECT_EQ(PostList(), kWalk + PublishOf("brandList1") +  // the failed one used up a number
                              "+0 answer POST /remote/integration/brandList "
                              "{\"url\":\"http://here/1\",\"deadline\":\"soon\"}\n");
}

TEST_F(BrandList, APublisherThatFailsCostsTheFile)
{
    const struct {
        const char* name;
        bool fails;
        const char* answer;
        const char* log;
    } rows[] = {
        {"error", true, R"({"code":413,"subcode":6})", "1 PayloadPublish Error 413 6 \n"},
        {"no JSON", false, "url", "1 PayloadPublish Error 0 2005 \n"},
        {"no url", false, R"({"deadline":"soon"})", "1 PayloadPublish Error 0 2005 \n"},
        {"error that is none", true, "[]", "1 PayloadPublish Error 0 2005 \n"},
    };
    ConnectCloud();
    PostList();
    int count = 1;
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        if (row.fails) {
            m_world.portico.Fail(kPublish, row.answer);
        } else {
            m_world.portico.Put(kPublish, row.answer);
        }
        Log();
        const std::string file = "brandList" + std::to_string(count++);
        EXPECT_EQ(PostList(), kWalkAgain + PublishOf(file) + kRefused);
        EXPECT_EQ(Log(), std::string("3 Setting OSM InactvityTimer\n") + row.log +
                             "3 Deleting payload staging file, /mnt/nv/payload/" + file + "\n");
        EXPECT_TRUE(IsStagingEmpty());
    }
}

TEST_F(BrandList, AFileThatIsGoneIsNoError)
{
    ConnectCloud();
    m_world.portico.Hold();
    PostList();
    std::filesystem::remove(m_world.root.Path() + World::kStaging + "/brandList0");
    Log();
    m_world.portico.Release();
    EXPECT_TRUE(Effects().ends_with("\"deadline\":\"soon\"}\n"));
    EXPECT_EQ(Log(), "3 PayloadPublish response received\n");

    std::filesystem::remove(m_world.root.Path() + World::kStaging);
    EXPECT_EQ(PostList(), kWalkAgain + std::string(kRefused));
}

}  // namespace
}  // namespace TrellanService
