// SPDX-License-Identifier: Apache-2.0

#include "console/ConsoleText.h"

#include <algorithm>

#include "orlu/LogLine.h"

namespace OrluConsole {

std::optional<std::vector<std::string>> SplitWords(std::string_view line)
{
    std::vector<std::string> words;
    bool inWord = false;
    while (!line.empty()) {
        const char next = line.front();
        line.remove_prefix(1);
        if (next == ' ' || next == '\t') {
            inWord = false;
            continue;
        }
        if (!inWord) {
            words.emplace_back();
            inWord = true;
        }
        if (next != '"' && next != '\'') {
            words.back() += next;
            continue;
        }
        const std::size_t end = line.find(next);
        if (end == std::string_view::npos) {
            return std::nullopt;
        }
        words.back() += line.substr(0, end);
        line.remove_prefix(end + 1);
    }
    return words;
}

std::string Printable(std::string_view text)
{
    std::string printable;
    while (!text.empty()) {
        const std::size_t size = std::min(text.find_first_of("\n\t"), text.size());
        Orlu::AppendEscaped(printable, text.substr(0, size));
        text.remove_prefix(size);
        if (!text.empty()) {
            printable += text.front();
            text.remove_prefix(1);
        }
    }
    return printable;
}

}  // namespace OrluConsole
