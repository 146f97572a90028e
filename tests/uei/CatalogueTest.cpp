// SPDX-License-Identifier: Apache-2.0

#include <json/value.h>
#include <json/writer.h>

#include "uei/UEIFixture.h"

using namespace TrellanServiceMessages;

namespace TrellanService::Tests {
namespace {

class Catalogue : public UEIFixture {
protected:
    Catalogue()
    {
        Init();
        engine.OpenSession(2);
        effects.Take();
        TakeLog();
        qsp.lists = {{"get_device_type_name", {"TV", "STB"}},
                     {"get_brand_name", {"Acme", "Acme Gold"}},
                     {"get_model_name", {"M1", "M2"}},
                     {"get_codeset_name", {"T0001", "T0002"}}};
        qsp.numbers["get_model_fuzzy_value"] = {90, 70};
    }

    /// The calls of the library, the result and the returned values.
    template <class Query>
    std::string Ask(Query query)
    {
        Json::Value out;
        const int result = query(out);
        Json::StreamWriterBuilder builder;
        builder["indentation"] = "";
        return effects.Take() + std::to_string(result) + " " + Json::writeString(builder, out);
    }

    bool List(const std::string& type, const std::string& filter)
    {
        BrandListReq_t request;
        request.set_devicetype(type);
        request.set_filter(filter);
        return engine.GetBrandList(request);
    }

    /// The prefixes that the library was asked for.
    std::string Walk()
    {
        std::string walk;
        const std::string calls = effects.Take();
        const std::string call = "retrieve_brands_total TV ";
        for (auto at = calls.find(call); at != std::string::npos; at = calls.find(call, at + 1)) {
            walk += calls.substr(at + call.size(), calls.find(" 1\n", at) - at - call.size()) + ",";
        }
        return walk;
    }
};

TEST_F(Catalogue, IsWalkedFromTypesToCodesets)
{
    EXPECT_EQ(Ask([this](Json::Value& out) { return engine.GetDeviceTypes(out, 2); }),
              "+0 qsp retrieve_device_types_total\n+0 qsp get_device_type_name 0\n"
              "+0 qsp get_device_type_name 1\n0 {\"types\":[\"TV\",\"STB\"]}");
    EXPECT_EQ(Ask([this](Json::Value& out) { return engine.GetBrands("TV", "a", out, 2); }),
              "+0 qsp retrieve_brands_total TV a 1\n+0 qsp get_brand_name 0\n"
              "+0 qsp get_brand_name 1\n"
              "0 {\"brands\":[\"Acme\",\"Acme Gold\"],\"prefix\":\"a\",\"type\":\"TV\"}");
    EXPECT_EQ(Ask([this](Json::Value& out) {
                  return engine.GetModels("TV", "Acme Gold", "m", -1, out, 2);
              }),
              "+0 qsp get_brand_name 0\n+0 qsp get_brand_name 1\n"
              "+0 qsp option_set_minimum_fuzzy_threshold 50\n+0 qsp retrieve_models_total 1 m 1\n"
              "+0 qsp get_model_name 0\n+0 qsp get_model_fuzzy_value 0\n"
              "+0 qsp get_model_name 1\n+0 qsp get_model_fuzzy_value 1\n"
              "0 {\"brand\":\"Acme Gold\",\"fuzzyThold\":50,\"fuzzyVals\":[90,70],\"hint\":\"m\","
              "\"models\":[\"M1\",\"M2\"],\"type\":\"TV\"}");
    qsp.results["get_model_fuzzy_value"] = 1;
    EXPECT_EQ(
        Ask([this](Json::Value& out) { return engine.GetAllModels("TV", "Acme Gold", out, 2); }),
        "+0 qsp option_set_minimum_fuzzy_threshold 0\n+0 qsp retrieve_models_total 1  1\n"
        "+0 qsp get_model_name 0\n+0 qsp get_model_fuzzy_value 0\n"
        "+0 qsp get_model_name 1\n+0 qsp get_model_fuzzy_value 1\n"
        "0 {\"brand\":\"Acme Gold\",\"fuzzyThold\":0,\"fuzzyVals\":[33,33],\"hint\":\"\","
        "\"models\":[\"M1\",\"M2\"],\"type\":\"TV\"}");
    EXPECT_EQ(Ask([this](Json::Value& out) {
                  return engine.GetModelCodesets("TV", "Acme Gold", "M2", out, 2);
              }),
              "+0 qsp retrieve_models_total 1 M2 1\n+0 qsp get_model_name 0\n"
              "+0 qsp get_model_name 1\n+0 qsp retrieve_codesets_by_model_total 1\n"
              "+0 qsp get_codeset_name 0\n+0 qsp get_codeset_name 1\n"
              "0 {\"brand\":\"Acme Gold\",\"codesets\":[\"T0001\",\"T0002\"],\"model\":\"M2\","
              "\"type\":\"TV\"}");
    EXPECT_EQ(engine.FindModelIndex("TV", "Acme Gold", "M2", 2), 1);
    EXPECT_EQ(effects.Take(), "") << "nothing is asked twice";
    EXPECT_EQ(
        Ask([this](Json::Value& out) { return engine.GetBrandCodesets("TV", "Acme", out, 2); }),
        "+0 qsp get_brand_name 0\n+0 qsp retrieve_codesets_by_brand_total 0\n"
        "+0 qsp get_codeset_name 0\n+0 qsp get_codeset_name 1\n"
        "0 {\"brand\":\"Acme\",\"codesets\":[\"T0001\",\"T0002\"],\"type\":\"TV\"}");
}

TEST_F(Catalogue, FindsABrandThatTheListOfAnotherPrefixLacks)
{
    EXPECT_EQ(engine.LoadBrands("TV", "x", false), 0);
    effects.Take();
    EXPECT_EQ(engine.FindBrandIndex("TV", "Acme Silver", 2), -2);
    EXPECT_EQ(effects.Take(),
              "+0 qsp retrieve_device_types_total\n+0 qsp retrieve_brands_total TV Acme Silver 1\n"
              "+0 qsp get_brand_name 0\n+0 qsp get_brand_name 1\n"
              "+0 qsp retrieve_brands_total TV Acme Silver 1\n"
              "+0 qsp get_brand_name 0\n+0 qsp get_brand_name 1\n");
}

TEST_F(Catalogue, TellsNothingFoundFromAFailure)
{
    qsp.results["retrieve_brands_total"] = 44;
    EXPECT_TRUE(Ask([this](Json::Value& out) {
                    return engine.GetBrands("TV", "q", out, 2);
                }).ends_with("0 {\"brands\":[],\"prefix\":\"q\",\"type\":\"TV\"}"));
    EXPECT_EQ(engine.FindBrandIndex("TV", "Acme", 2), -2);
    EXPECT_TRUE(
        Ask([this](Json::Value& out) { return engine.GetModels("TV", "Acme", "", -1, out, 2); })
            .ends_with("0 {\"brand\":\"Acme\",\"fuzzyThold\":-1,\"hint\":\"\",\"models\":[],"
                       "\"type\":\"TV\"}"));
    qsp.results["retrieve_brands_total"] = 7;
    EXPECT_EQ(engine.FindBrandIndex("TV", "Acme", 2), -1);
    EXPECT_TRUE(Ask([this](Json::Value& out) {
                    return engine.GetBrands("TV", "q", out, 2);
                }).ends_with("-1 null"));
    qsp.results = {{"retrieve_codesets_by_model_total", 7}};
    EXPECT_TRUE(Ask([this](Json::Value& out) {
                    return engine.GetModelCodesets("TV", "Acme", "M1", out, 2);
                }).ends_with("-1 null"));
    EXPECT_EQ(TakeLog(), "2 Unable to retrieve num of codesets 7 0\n");
    qsp.results = {{"get_lookup_session", 7}};
    Init();
    EXPECT_EQ(engine.FindBrandIndex("TV", "Acme", 2), -1);
}

TEST_F(Catalogue, AsksOnceForManyModelsAndTakesAThresholdOfZero)
{
    qsp.lists["get_model_name"] = std::vector<std::string>(50, "M");
    Ask([this](Json::Value& out) { return engine.GetAllModels("TV", "Acme", out, 2); });
    const std::string calls =
        Ask([this](Json::Value& out) { return engine.GetAllModels("TV", "Acme", out, 2); });
    EXPECT_EQ(calls.find("retrieve_models_total"), calls.rfind("retrieve_models_total"));
    EXPECT_NE(Ask([this](Json::Value& out) {
                  return engine.GetModels("TV", "Acme", "", 0, out, 2);
              }).find("option_set_minimum_fuzzy_threshold 0\n"),
              std::string::npos);
}

TEST_F(Catalogue, FailsWhereABrandHasNoCodesetOrANullName)
{
    const auto codesets = [this] {
        TakeLog();
        const std::string all =
            Ask([this](Json::Value& out) { return engine.GetBrandCodesets("TV", "Acme", out, 2); });
        return all.substr(all.rfind('\n') + 1) + "; " + TakeLog();
    };
    qsp.lists["get_codeset_name"] = {};
    EXPECT_EQ(codesets(), "-1 null; 2 get num codesets 0 0\n");
    qsp.results["retrieve_codesets_by_brand_total"] = 7;
    EXPECT_EQ(codesets(), "-1 null; 2 get num codesets 7 0\n");
    qsp.lists["get_codeset_name"] = {"T0001"};
    qsp.results.clear();
    EXPECT_EQ(codesets().substr(0, 2), "0 ");
    qsp.lists["get_brand_name"] = {ScriptedQsp::kNull};
    EXPECT_TRUE(Ask([this](Json::Value& out) {
                    return engine.GetBrands("TV", "a", out, 2);
                }).ends_with("-1 null"));
}

TEST_F(Catalogue, DoesNotTakeALongNameForItsBeginning)
{
    const std::string begin(199, 'a');
    qsp.lists["get_brand_name"] = {begin + "bc", begin + "b"};
    EXPECT_EQ(engine.FindBrandIndex("TV", begin + "bc", 2), 0);
    EXPECT_EQ(engine.FindBrandIndex("TV", begin + "b", 2), 1);
    EXPECT_EQ(engine.FindBrandIndex("TV", begin, 2), -2);
}

TEST_F(Catalogue, BrandListsGoFromTheFilterToTheEnd)
{
    EXPECT_FALSE(List("DEVICE_TYPE_TV", "z"));
    EXPECT_EQ(TakeLog(), "3 No staging directory for brandlist \n");
    staging = "/mnt/nv/payload";
    root.Write(staging + "/other", "");
    EXPECT_FALSE(List("TV", "z"));
    EXPECT_EQ(TakeLog(), "3 No mapping for device type TV\n");
    effects.Take();

    EXPECT_TRUE(List("DEVICE_TYPE_SMART_TV", "z"));
    EXPECT_EQ(Walk(), "z,");
    EXPECT_EQ(TakeLog(), "3 Writing brand list to file /mnt/nv/payload/brandList0\n");
    EXPECT_EQ(root.Read(staging + "/brandList0"), R"({"brandList":["Acme","Acme Gold"]})");
    for (const auto& [filter, walk] : {std::pair{".",
                                                 "0,1,2,3,4,5,6,7,8,9,a,b,c,d,e,f,g,h,i,j,k,"
                                                 "l,m,n,o,p,q,r,s,t,u,v,w,x,y,z,"},
                                       std::pair{"9x",
                                                 "9x,ax,b,c,d,e,f,g,h,i,j,k,l,m,n,o,p,q,r,s,"
                                                 "t,u,v,w,x,y,z,"},
                                       std::pair{"yes", "yes,z,"}}) {
        EXPECT_TRUE(List("DEVICE_TYPE_TV", filter));
        EXPECT_EQ(Walk(), walk);
    }
    qsp.results["retrieve_brands_total"] = 7;
    EXPECT_TRUE(List("DEVICE_TYPE_TV", "x"));
    EXPECT_EQ(Walk(), "x,") << "a failure ends the walk";
    EXPECT_EQ(root.Read(staging + "/brandList0"), "{}");
}

TEST_F(Catalogue, BrandListsAreCutWhereTheyReachTenThousand)
{
    staging = "/mnt/nv/payload";
    root.Write(staging + "/other", "");
    qsp.lists["get_brand_name"] = std::vector<std::string>(6000, "b");
    qsp.lists["get_brand_name"][0] = "\xFF";
    EXPECT_TRUE(List("DEVICE_TYPE_TV", "x"));
    const std::string text = root.Read(staging + "/brandList0");
    EXPECT_EQ(std::count(text.begin(), text.end(), 'b'), 10000 + 5999 + 1);
    EXPECT_TRUE(TakeLog().starts_with("2 UEI returned a brand that is not UTF-8\n"));
}

}  // namespace
}  // namespace TrellanService::Tests
