// SPDX-License-Identifier: Apache-2.0

#include "qsp/Base64.h"

#include <cstddef>

namespace QSP::Base64 {

namespace {

constexpr std::string_view kAlphabet =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

}  // namespace

std::string Encode(std::span<const std::uint8_t> bytes)
{
    std::string text;
    text.reserve((bytes.size() + 2) / 3 * 4);
    for (std::size_t at = 0; at < bytes.size(); at += 3) {
        std::uint32_t group = 0;
        for (std::size_t i = 0; i < 3; ++i) {
            group = group << 8 | (at + i < bytes.size() ? bytes[at + i] : 0U);
        }
        for (std::size_t i = 0; i < 4; ++i) {
            const bool padding = at + i > bytes.size();
            text += padding ? '=' : kAlphabet[group >> (18 - 6 * i) & 0x3F];
        }
    }
    return text;
}

std::optional<std::vector<std::uint8_t>> Decode(std::string_view text)
{
    if (text.size() % 4 != 0) {
        return std::nullopt;
    }
    const std::size_t padding = text.ends_with("==") ? 2 : text.ends_with('=') ? 1 : 0;
    text.remove_suffix(padding);
    std::vector<std::uint8_t> bytes;
    bytes.reserve(text.size() / 4 * 3 + 2);
    std::uint32_t bits = 0;
    unsigned count = 0;
    for (const char c : text) {
        const std::size_t value = kAlphabet.find(c);
        if (value == std::string_view::npos) {
            return std::nullopt;
        }
        bits = (bits << 6 | static_cast<std::uint32_t>(value)) & 0xFFFF;
        count += 6;
        if (count >= 8) {
            count -= 8;
            bytes.push_back(static_cast<std::uint8_t>(bits >> count));
        }
    }
    // Only one text stands for given bytes: unused bits must be zero, and the padding must fit the
    // length.
    const bool spare = (bits & ((1U << count) - 1)) != 0;
    if (spare || count != padding * 2) {
        return std::nullopt;
    }
    return bytes;
}

}  // namespace QSP::Base64
