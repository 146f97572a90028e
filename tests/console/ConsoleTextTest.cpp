// SPDX-License-Identifier: Apache-2.0

#include "console/ConsoleText.h"

#include <gtest/gtest.h>

namespace OrluConsole {
namespace {

TEST(ConsoleText, StandBetweenBlanksOrInQuotes)
{
    using List = std::vector<std::string>;
    const std::string binary("\0\x80\r", 3);
    const std::pair<std::string, std::optional<List>> rows[] = {
        {"", List{}},
        {" \t ", List{}},
        {"trs  get_version\t", List{"trs", "get_version"}},
        {"osd \"My TV\" 'a \"b\"'", List{"osd", "My TV", "a \"b\""}},
        {"a\"b c\"d ''", List{"ab cd", ""}},
        {binary, List{binary}},
        {"it's", std::nullopt},
        {"a \"", std::nullopt},
    };
    for (const auto& [line, words] : rows) {
        SCOPED_TRACE(line);
        EXPECT_EQ(SplitWords(line), words);
    }
}

TEST(ConsoleText, OfAnAnswerCannotDriveTheTerminal)
{
    EXPECT_EQ(Printable("a\n\tb\x1b[2J\r\xff\xc3\xa9"), "a\n\tb\\x1b[2J\\r\\xff\xc3\xa9");
}

}  // namespace
}  // namespace OrluConsole
