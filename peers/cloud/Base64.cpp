// SPDX-License-Identifier: Apache-2.0

#include "cloud/Base64.h"

#include <openssl/evp.h>

#include <algorithm>
#include <cstddef>

namespace Cloud {

namespace {

constexpr std::string_view kAlphabet =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr std::size_t kGroup = 4;

const unsigned char* Bytes(std::string_view text)
{
    return reinterpret_cast<const unsigned char*>(text.data());
}

}  // namespace

std::string ToBase64(std::string_view bytes)
{
    // EVP_EncodeBlock writes a null behind its output; a string has a byte for it.
    std::string text((bytes.size() + 2) / 3 * kGroup, '\0');
    EVP_EncodeBlock(reinterpret_cast<unsigned char*>(text.data()), Bytes(bytes),
                    static_cast<int>(bytes.size()));
    return text;
}

std::optional<std::string> FromBase64(std::string_view text)
{
    // Checked here: EVP_DecodeBlock skips blanks around the text and accepts "=" within it.
    const std::size_t end = std::min(text.find_first_not_of(kAlphabet), text.size());
    const std::size_t padding = text.size() - end;
    if (text.size() % kGroup != 0 || padding > 2 ||
        text.find_first_not_of('=', end) != std::string_view::npos) {
        return std::nullopt;
    }
    std::string bytes(text.size() / kGroup * 3, '\0');
    EVP_DecodeBlock(reinterpret_cast<unsigned char*>(bytes.data()), Bytes(text),
                    static_cast<int>(text.size()));
    // EVP_DecodeBlock decodes the padding to null bytes.
    bytes.resize(bytes.size() - padding);
    return bytes;
}

}  // namespace Cloud
