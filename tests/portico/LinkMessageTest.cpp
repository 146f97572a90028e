// SPDX-License-Identifier: Apache-2.0

#include "portico/LinkMessage.h"

#include <gtest/gtest.h>

namespace Portico {
namespace {

constexpr const char* kGood[] = {
    R"({"type":"hello","name":"a \"quoted\" name"})",
    R"({"type":"register","id":1,"method":"GET","path":"/remote/integration"})",
    R"({"type":"interest","id":2,"paths":["/system/info","/a-b_c~.d"]})",
    R"({"type":"subscribe","id":3,"path":"/network/status"})",
    R"({"type":"withdraw","id":9007199254740993})",
    "{\"type\":\"request\",\"id\":7,\"method\":\"PUT\",\"path\":\"/x\"}\n{\"a\":\n1}",
    "{\"type\":\"answer\",\"id\":7,\"error\":true}\nno JSON",
    "{\"type\":\"answer\",\"id\":7}\n{}",
    R"({"type":"ready","id":2})",
    R"({"type":"notReady","id":2})",
    "{\"type\":\"notify\",\"id\":3}\n{}",
};

TEST(LinkMessageTest, WhatIsReadIsWrittenTheSameAndDamageIsNeverAFault)
{
    std::string why;
    for (const std::string text : kGood) {
        const auto good = ReadLinkMessage(text, why);
        ASSERT_TRUE(good) << text << why;
        EXPECT_EQ(WriteLinkMessage(*good), text);
        for (std::size_t i = 0; i < std::min(text.find('\n'), text.size()); ++i) {
            EXPECT_FALSE(ReadLinkMessage(text.substr(0, i), why)) << text.substr(0, i);
            std::string damaged = text;
            for (const char c : {'\0', '"', '{', '0', '\xff'}) {
                damaged[i] = c;
                if (const auto message = ReadLinkMessage(damaged, why)) {
                    EXPECT_TRUE(ReadLinkMessage(WriteLinkMessage(*message), why)) << damaged;
                }
            }
        }
    }
}

TEST(LinkMessageTest, RefusesInvalidMessages)
{
    const std::string rows[] = {
        "",
        "\"hello\"",
        R"({"type":7,"name":"x"})",
        R"({"type":"goodbye","id":1})",
        R"({"type":"hello"})",
        R"({"type":"withdraw"})",
        R"({"type":"withdraw","id":0})",
        R"({"type":"withdraw","id":1.5})",
        R"({"type":"withdraw","id":18446744073709551616})",
        R"({"type":"register","id":1,"method":"DELETE","path":"/x"})",
        R"({"type":"interest","id":1,"paths":"/x"})",
        R"({"type":"interest","id":1,"paths":["/x",1]})",
        R"({"type":"answer","id":1,"error":"no"})",
        R"({"type":"subscribe","id":1,"path":"/)" + std::string(300, 'a') + "\"}",
    };
    std::string why;
    for (const auto& row : rows) {
        EXPECT_FALSE(ReadLinkMessage(row, why)) << row;
        EXPECT_FALSE(why.empty()) << row;
    }
}

TEST(LinkMessageTest, KnowsThePathOfAResource)
{
    for (const char* path : {"/x", "/remote/integration/brandList", "/a.b", "/..a/b.."}) {
        EXPECT_TRUE(IsResourcePath(path)) << path;
    }
    for (const char* path : {"", "/", "x", "/x/", "//x", "/x//y", "/.", "/x/..", "/x/../y", "/x y",
                             "/x\"", "/%2e", "/\xc3\xa4"}) {
        EXPECT_FALSE(IsResourcePath(path)) << path;
    }
}

}  // namespace
}  // namespace Portico
