// SPDX-License-Identifier: Apache-2.0

#include <fstream>
#include <sstream>

#include <gtest/gtest.h>

#include "controller/Command.h"
#include "orlu/ProtoToMarkup.h"

namespace Controller {

namespace {

std::string Json(const ToService& said)
{
    return std::to_string(said.id) + " " + ProtoToMarkup::ToJson(*said.message, true, false, false);
}

/// The command line, whose words are separated by bars.
Arguments Read(const std::string& line)
{
    std::vector<std::string> words;
    std::istringstream in(line);
    for (std::string word; std::getline(in, word, '|');) {
        words.push_back(word);
    }
    return ReadArguments(words);
}

TEST(Arguments, BecomeTheMessageOfTheirCommand)
{
    const std::string edid = ::testing::TempDir() + "controller.edid";
    std::ofstream(edid, std::ios::binary) << std::string("\0\xFF\x7F", 3);
    const struct {
        std::string line;
        Mode mode;
        const char* said;
    } rows[] = {
        {"cloud", Mode::kAsk, "6 {}"},
        {"sources|T2051|C0123", Mode::kTell, R"(1 {"ciCode":["T2051","C0123"]})"},
        {"key|T2051|tv_power", Mode::kAsk,
         R"(0 {"keyVal":36,"keyAction":"KEY_ACTION_SINGLE_PRESS","codeset":"T2051"})"},
        {"key|T2051|ORLU_tv_Power|--hold|0", Mode::kHold,
         R"(0 {"keyVal":36,"keyAction":"KEY_ACTION_CONTINUOUS_PRESS","codeset":"T2051"})"},
        {"keymap|T2051", Mode::kAsk, R"(2 {"ciCode":"T2051"})"},
        {"has-key|T2051|7", Mode::kAsk, R"(4 {"ciCode":"T2051","ueiKey":7})"},
        {"find-cec|0xf0|010|TV 1", Mode::kAsk,
         R"(5 {"vendorId":240,"logicalAddr":10,"osd":"TV 1"})"},
        {"find-edid|" + edid, Mode::kAsk, R"(10 {"edid":"AP9/"})"},
        {"direct|DEVICE_TYPE_TV|Acme|-", Mode::kAsk,
         R"(8 {"deviceType":"DEVICE_TYPE_TV","brand":"Acme","model":"-"})"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.said);
        const auto arguments = Read(row.line);
        ASSERT_TRUE(arguments.command) << arguments.complaint;
        EXPECT_EQ(arguments.command->mode, row.mode);
        EXPECT_EQ(Json(arguments.command->message), row.said);
    }
    EXPECT_EQ(Read("watch").command->mode, Mode::kWatch);
    EXPECT_EQ(Read("-").command->mode, Mode::kLines);
    EXPECT_EQ(Read("key|T1|1|--hold|500").command->hold.count(), 500);
}

TEST(Arguments, ThatAreWrongEndWithOneLine)
{
    for (const char* line :
         {"", "nope", "key|T2051", "key|T2051|no_key", "key|T2051|1|--hold|9999999999",
          "key|\xFF|1", "has-key|T2051|1x", "find-cec|4294967296|0|TV", "find-edid|/",
          "find-edid|/no/such/file"}) {
        SCOPED_TRACE(line);
        const auto arguments = Read(line);
        EXPECT_FALSE(arguments.command);
        EXPECT_EQ(arguments.code, kUsage);
        EXPECT_NE(arguments.complaint, "");
        EXPECT_EQ(arguments.complaint.find('\n'), std::string::npos);
    }
    EXPECT_EQ(Read("--help").code, 0);
    EXPECT_NE(Read("key|--help").output.find("--hold"), std::string::npos);
}

TEST(Lines, SayAMessageOrAreComplainedOf)
{
    const struct {
        const char* line;
        const char* said;
        const char* complaint;
    } rows[] = {
        {"6", "6 {}", ""},
        {R"(4{"ciCode": "T1", "ueiKey": 3, "other": 1})", R"(4 {"ciCode":"T1","ueiKey":3})", ""},
        {"", "", "a line is a message id"},
        {"-1 {}", "", "a line is a message id"},
        {"11 {}", "", "no message has the id 11"},
        {"9 {}", "", "the service sends id 9"},
        {"6 []", "", "CloudConnectState_t"},
    };
    for (const auto& row : rows) {
        std::string complaint;
        const auto said = ReadLine(row.line, complaint);
        EXPECT_EQ(said ? Json(*said) : "", row.said) << row.line;
        EXPECT_TRUE(complaint.starts_with(row.complaint)) << row.line << complaint;
    }
}

}  // namespace

}  // namespace Controller
