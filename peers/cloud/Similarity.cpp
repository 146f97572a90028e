// SPDX-License-Identifier: Apache-2.0

#include "cloud/Similarity.h"

#include <algorithm>
#include <cstddef>
#include <numeric>
#include <string>
#include <utility>
#include <vector>

namespace Cloud {

namespace {

/// Longer text is cut, since the time grows with the product of the lengths.
constexpr std::size_t kMaximumLength = 64;
constexpr std::size_t kPercent = 100;
constexpr std::size_t kLeastForPart = 60;

bool IsDigit(char c)
{
    return c >= '0' && c <= '9';
}

std::string LettersAndDigits(std::string_view text)
{
    std::string kept;
    for (char c : text.substr(0, kMaximumLength)) {
        if (c >= 'A' && c <= 'Z') {
            c = static_cast<char>(c - 'A' + 'a');
        }
        // Bytes from 0x80 on are parts of UTF-8 letters.
        if ((c >= 'a' && c <= 'z') || IsDigit(c) || static_cast<unsigned char>(c) >= 0x80) {
            kept.push_back(c);
        }
    }
    return kept;
}

/// The least number of characters to insert, drop or replace (Levenshtein), with one row of the
/// table in memory.
std::size_t Distance(const std::string& a, const std::string& b)
{
    std::vector<std::size_t> row(b.size() + 1);
    std::iota(row.begin(), row.end(), std::size_t{0});
    for (std::size_t i = 0; i < a.size(); ++i) {
        std::size_t diagonal = std::exchange(row[0], i + 1);
        for (std::size_t j = 0; j < b.size(); ++j) {
            const std::size_t replaced = diagonal + (a[i] == b[j] ? 0 : 1);
            diagonal = row[j + 1];
            row[j + 1] = std::min({replaced, row[j] + 1, row[j + 1] + 1});
        }
    }
    return row.back();
}

}  // namespace

unsigned Similarity(std::string_view hint, std::string_view name)
{
    const std::string asked = LettersAndDigits(hint);
    const std::string known = LettersAndDigits(name);
    if (asked.empty() || asked == known) {
        return kPercent;
    }
    const std::size_t longer = std::max(asked.size(), known.size());
    std::size_t value = kPercent * (longer - Distance(asked, known)) / longer;
    // A user types the beginning of a long name: each missing character would count as a
    // difference.
    if (known.starts_with(asked)) {
        value = std::max(value, kLeastForPart + (kPercent - kLeastForPart) * asked.size() / longer);
    }
    // 100 is for equal text only.
    return static_cast<unsigned>(std::min(value, kPercent - 1));
}

}  // namespace Cloud
