// SPDX-License-Identifier: Apache-2.0

#include "cloud/builder/Collection.h"

#include <openssl/sha.h>

#include <fmt/format.h>

#include <algorithm>
#include <array>

namespace Cloud {

namespace {

/// The letter of each device type; M for all others. The number behind the letter has 13 bits.
constexpr std::array<std::pair<std::string_view, char>, 6> kLetters = {{
    {"TV", 'T'},
    {"STB", 'S'},
    {"DVD", 'Y'},
    {"OTT", 'N'},
    {"VCR", 'V'},
    {"RECEIVER", 'R'},
}};
constexpr char kOtherLetter = 'M';
constexpr unsigned kNumbers = 8192;

char Letter(std::string_view type)
{
    const auto* row =
        std::ranges::find(kLetters, type, [](const auto& pair) { return pair.first; });
    return row == kLetters.end() ? kOtherLetter : row->second;
}

}  // namespace

std::string SmallLetters(std::string_view text)
{
    std::string small(text);
    for (char& c : small) {
        if (c >= 'A' && c <= 'Z') {
            c = static_cast<char>(c - 'A' + 'a');
        }
    }
    return small;
}

std::uint64_t ContentHash(std::string_view bytes)
{
    std::array<unsigned char, SHA256_DIGEST_LENGTH> digest{};
    SHA256(reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size(), digest.data());
    std::uint64_t hash = 0;
    for (std::size_t i = 0; i < sizeof(hash); ++i) {
        hash = hash << 8 | digest[i];
    }
    return hash;
}

std::size_t Collection::AddCodeset(Codeset codeset)
{
    const std::pair<char, std::string> key(Letter(codeset.type), codeset.binary);
    const auto known = byBinary.find(key);
    // Equal code sets without a name are stored once. A code set with a name is always added.
    if (codeset.name.empty() && known != byBinary.end()) {
        return known->second;
    }
    const std::size_t place = codesets.size();
    byBinary.try_emplace(key, place);
    if (!codeset.name.empty()) {
        byName.emplace(codeset.name, place);
    }
    codesets.push_back(std::move(codeset));
    return place;
}

void Collection::NameCodesets()
{
    // In the order of the content, so that code sets whose numbers clash get the same numbers in
    // each run.
    std::map<std::tuple<char, std::uint64_t, std::string>, std::size_t> unnamed;
    for (std::size_t i = 0; i < codesets.size(); ++i) {
        const Codeset& codeset = codesets[i];
        if (codeset.name.empty()) {
            unnamed.emplace(
                std::tuple(Letter(codeset.type), ContentHash(codeset.binary), codeset.binary), i);
        }
    }
    for (const auto& [key, place] : unnamed) {
        for (unsigned step = 0; step < kNumbers; ++step) {
            const auto number = static_cast<unsigned>((std::get<1>(key) + step) % kNumbers);
            std::string name = fmt::format("{}{:04}", std::get<0>(key), number);
            if (byName.emplace(name, place).second) {
                codesets[place].name = std::move(name);
                break;
            }
        }
    }
}

}  // namespace Cloud
