// SPDX-License-Identifier: Apache-2.0

#include <fmt/format.h>
#include <gmock/gmock.h>
#include <google/protobuf/util/json_util.h>
#include <gtest/gtest.h>

#include "ProtoBufs/CodesetConfig.pb.h"
#include "ProtoBufs/DataCollection.pb.h"
#include "ProtoBufs/PayloadPublish.pb.h"
#include "ProtoBufs/Trellan_Service.pb.h"
#include "orlu/ProtoToMarkup.h"

namespace {

using ProtoToMarkup::FromJson;
using ProtoToMarkup::MarkupError;
using ProtoToMarkup::ToJson;
using TrellanServiceMessages::OSMControlMsg_t;

/// The text of the error, or the message after reading.
std::string Read(const std::string& text, google::protobuf::Message& message)
{
    try {
        FromJson(text, message);
        return message.ShortDebugString();
    } catch (const MarkupError& error) {
        EXPECT_EQ(message.ByteSizeLong(), 0U);
        return std::string("! ") + error.what();
    }
}

std::string Nested(int depth)
{
    return R"({"other": )" + std::string(static_cast<std::size_t>(depth) - 1, '[') +
           std::string(static_cast<std::size_t>(depth) - 1, ']') + "}";
}

TEST(ProtoToMarkup, ReadsWhatIsJsonAndFitsTheMessage)
{
    const struct {
        std::string text;
        const char* result;
    } rows[] = {
        {R"({"action": "ACTION_START"})", R"(action: "ACTION_START")"},
        {R"({"action": "a", "unknown": {"deep": [1, null]}, "response": null})", R"(action: "a")"},
        {R"({"action": "\u00e9\ud83d\ude00"})", R"(action: "\303\251\360\237\230\200")"},
        {"{}", ""},
        {Nested(31), ""},
        {Nested(100000), "! OSMControlMsg_t: nested too deeply"},
        {"[]", "! OSMControlMsg_t: not an object"},
        {"{\"action\": \"\xFF\"}", "! OSMControlMsg_t: not UTF-8 text"},
        {R"({"action": {"a": "b"}})", "! OSMControlMsg_t: "},
        {R"({"action": "a", "action": "b"})", "! OSMControlMsg_t: "},
        {R"({"action": "a"} x)", "! OSMControlMsg_t: "},
        {R"({'action': 'a'})", "! OSMControlMsg_t: "},
        {R"({"action": "a" /* b */})", "! OSMControlMsg_t: "},
        {std::string("{\"action\": \"a\"}\0", 16), "! OSMControlMsg_t: "},
        {"", "! OSMControlMsg_t: "},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.text.substr(0, 60));
        OSMControlMsg_t message;
        message.set_response("from before");
        const std::string result = Read(row.text, message);
        if (std::string_view(row.result).ends_with(": ")) {
            EXPECT_THAT(result, testing::StartsWith(row.result));
            EXPECT_THAT(result, testing::Not(testing::HasSubstr("\n")));
        } else {
            EXPECT_EQ(result, row.result);
        }
    }
}

TEST(ProtoToMarkup, TypesAreThoseOfTheSchema)
{
    const std::pair<const char*, const char*> rows[] = {
        {R"({"devNum": 803, "safeToBlast": true, "keyMap": {"keys": [1, 4294967295]}})",
         "devNum: 803 safeToBlast: true keyMap { keys: 1 keys: 4294967295 }"},
        {R"({"devNum": "803"})", "devNum: 803"},
        {R"({"devNum": 4294967296})", "! CodesetDetails: "},
        {R"({"devNum": 1.5})", "! CodesetDetails: "},
        {R"({"keyMap": [1]})", "! CodesetDetails: "},
        {R"({"ueiKeys": "AAH/"})", R"(ueiKeys: "\000\001\377")"},
        {R"({"ueiKeys": "%%"})", "! CodesetDetails: "},
    };
    for (const auto& [text, result] : rows) {
        SCOPED_TRACE(text);
        CodesetConfig::CodesetDetails message;
        EXPECT_THAT(Read(text, message), testing::StartsWith(result));
    }
}

TEST(ProtoToMarkup, ARequiredFieldMustBeThereBothWays)
{
    Portico::PayloadPublishRequest request;
    EXPECT_EQ(Read(R"({"fileName": "f"})", request),
              "! PayloadPublishRequest: missing field lifeSpanSec");
    EXPECT_EQ(Read(R"({"fileName": "f", "lifeSpanSec": 10})", request),
              R"(fileName: "f" lifeSpanSec: 10)");
    request.clear_filename();
    EXPECT_THROW(ToJson(request, true, false, false), MarkupError);
}

TEST(ProtoToMarkup, WritesSetFieldsUnderTheirOwnNames)
{
    DataCollection::Event event;
    event.set_data("{\"a\": \"\n\"}");
    event.set_monotime(5);
    EXPECT_EQ(ToJson(event, true, false, false), R"({"data":"{\"a\": \"\n\"}","monoTime":"5"})");
    DataCollection::State state;
    state.set_servicestatus(DataCollection::State::DATACOLLECTION_ENABLE);
    EXPECT_EQ(ToJson(state, true, false, false), R"({"ServiceStatus":"DATACOLLECTION_ENABLE"})");
}

TEST(ProtoToMarkup, ListsOfTextsAreWrittenAsProtobufWritesThem)
{
    using TrellanServiceMessages::BrandListResp_t;
    google::protobuf::util::JsonPrintOptions options;
    options.preserve_proto_field_names = true;
    for (unsigned c = 1; c < 0x3000; ++c) {
        BrandListResp_t list;
        FromJson(fmt::format(R"({{"brandList": ["Acme", "a\u{:04x}"]}})", c), list);
        std::string wanted;
        ASSERT_TRUE(google::protobuf::util::MessageToJsonString(list, &wanted, options).ok());
        ASSERT_EQ(ToJson(list, true, false, false), wanted) << c;
    }
    EXPECT_EQ(ToJson(BrandListResp_t(), true, false, false), "{}");
    BrandListResp_t bad;
    bad.add_brandlist("\xC3");
    EXPECT_THROW(ToJson(bad, true, false, false), MarkupError);
}

TEST(ProtoToMarkup, TextThatWouldNotReadBackIsRefused)
{
    CodesetConfig::CodesetConfig config;
    config.add_codesets()->set_name("T2051");
    config.add_codesets()->set_name("T\xFF\xFE");
    EXPECT_THROW(ToJson(config, true, false, false), MarkupError);
    config.mutable_codesets(1)->set_name("T\xC3\xA9");
    config.mutable_codesets(1)->mutable_details()->set_ueikeys("\xFF");
    CodesetConfig::CodesetConfig back;
    FromJson(ToJson(config, true, false, true), back);
    EXPECT_EQ(back.SerializeAsString(), config.SerializeAsString());
}

// Must not crash. After an error the message must be empty, which `Read` checks.
TEST(ProtoToMarkup, CutAndDamagedTextsAreHarmless)
{
    CodesetConfig::CodesetConfig config;
    auto& details = *config.add_codesets()->mutable_details();
    details.set_checksum("0123\"\\");
    details.set_devnum(803);
    details.mutable_keymap()->add_keys(7);
    const std::string good = ToJson(config, true, false, false);
    CodesetConfig::CodesetConfig message;
    for (std::size_t size = 0; size < good.size(); ++size) {
        EXPECT_THAT(Read(good.substr(0, size), message), testing::StartsWith("!")) << size;
    }
    for (std::size_t at = 0; at < good.size(); ++at) {
        for (int value = 0; value < 256; ++value) {
            std::string damaged = good;
            damaged[at] = static_cast<char>(value);
            Read(damaged, message);
        }
    }
}

}  // namespace
