// SPDX-License-Identifier: Apache-2.0

#include <algorithm>
#include <cstdint>
#include <cstring>

#include "orlu/SystemUtils.h"
#include "orlu/Utf8.h"

namespace Orlu {

namespace {

/// One row for each range of first bytes. The range of the second byte excludes overlong forms,
/// surrogates and numbers above U+10FFFF.
struct FirstByteRow {
    unsigned char first, last, length, secondMin, secondMax;
};

constexpr FirstByteRow kFirstBytes[] = {
    {0x00, 0x7F, 1, 0x00, 0x00}, {0xC2, 0xDF, 2, 0x80, 0xBF}, {0xE0, 0xE0, 3, 0xA0, 0xBF},
    {0xE1, 0xEC, 3, 0x80, 0xBF}, {0xED, 0xED, 3, 0x80, 0x9F}, {0xEE, 0xEF, 3, 0x80, 0xBF},
    {0xF0, 0xF0, 4, 0x90, 0xBF}, {0xF1, 0xF3, 4, 0x80, 0xBF}, {0xF4, 0xF4, 4, 0x80, 0x8F},
};

bool IsWithin(char byte, unsigned char low, unsigned char high)
{
    const auto value = static_cast<unsigned char>(byte);
    return value >= low && value <= high;
}

}  // namespace

std::size_t Utf8SequenceLength(std::string_view text)
{
    if (text.empty()) {
        return 0;
    }
    for (const FirstByteRow& row : kFirstBytes) {
        if (!IsWithin(text[0], row.first, row.last)) {
            continue;
        }
        if (row.length == 1) {
            return 1;
        }
        const bool good = text.size() >= row.length &&
                          IsWithin(text[1], row.secondMin, row.secondMax) &&
                          std::all_of(text.begin() + 2, text.begin() + row.length,
                                      [](char byte) { return IsWithin(byte, 0x80, 0xBF); });
        return good ? row.length : 0;
    }
    return 0;
}

}  // namespace Orlu

namespace StringUtils {

std::string ToLower(std::string_view text)
{
    std::string lower(text);
    std::ranges::transform(lower, lower.begin(), [](char c) {
        return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    });
    return lower;
}

bool IsUtf8(std::string_view text)
{
    while (!text.empty()) {
        // Most texts are ASCII: eight bytes at a time.
        std::uint64_t eight = 0;
        if (text.size() >= sizeof eight) {
            std::memcpy(&eight, text.data(), sizeof eight);
            if ((eight & 0x8080808080808080U) == 0) {
                text.remove_prefix(sizeof eight);
                continue;
            }
        } else if (static_cast<unsigned char>(text[0]) < 0x80) {
            text.remove_prefix(1);
            continue;
        }
        const std::size_t length = Orlu::Utf8SequenceLength(text);
        if (length == 0) {
            return false;
        }
        text.remove_prefix(length);
    }
    return true;
}

}  // namespace StringUtils
