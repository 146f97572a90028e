// SPDX-License-Identifier: Apache-2.0

// A code set, numbers of two and four bytes little-endian:
//
//   offset  bytes  what
//   0       2      "TR"
//   2       1      version, 1
//   3       1      number of groups
//   4       1      number of keys
//   5       1      0
//   6       2      length of the binary, checksum included
//   8              the groups, each:
//                    1  protocol
//                    1  carrier in kHz, 0 for the protocol's carrier
//                    1  minimum number of frames of a press, 0 for the protocol's number
//                    1  number of raw sequences; 0 if the protocol is not raw, and then the group
//                       ends here
//                    1  number of durations, at most 16
//                    2  each duration, in microseconds
//                       each sequence:
//                         1  number of steps of a press
//                         1  number of steps of a repeat, 0 for the press again
//                            the steps of press and repeat in one row: numbers of durations, two
//                            in a byte, the earlier in the low half; press and repeat each have
//                            an even number of steps
//                  the keys, ascending, each:
//                    1  UEI key number
//                    1  number of its group, from 0
//                    4  scancode; in a raw group the number of the sequence, from 0
//   length - 2  2  CRC-16/CCITT-FALSE of all bytes before it

#include "infrared/CodesetBinary.h"

#include "infrared/CodesetFormat.h"

#include <fmt/format.h>

#include <algorithm>

namespace Lpm {
namespace {

constexpr std::uint8_t kLastUeiKey = 244;
constexpr std::uint8_t kMaximumFrames = 8;
constexpr std::uint8_t kLowestKHz = 20;
constexpr std::uint8_t kHighestKHz = 60;

using namespace CodesetFormat;

using Bytes = std::span<const std::uint8_t>;

/// Returns 0 behind the end and remembers that the bytes ran out.
class ByteReader {
public:
    explicit ByteReader(Bytes bytes) : m_rest(bytes) {}

    std::uint32_t Number(std::size_t size)
    {
        if (m_rest.size() < size) {
            m_ranOut = true;
            m_rest = {};
            return 0;
        }
        std::uint32_t value = 0;
        for (std::size_t i = 0; i < size; ++i) {
            value |= std::uint32_t{m_rest[i]} << 8 * i;
        }
        m_rest = m_rest.subspan(size);
        return value;
    }

    std::uint8_t Byte() { return static_cast<std::uint8_t>(Number(1)); }

    bool RanOut() const { return m_ranOut; }
    bool AtEnd() const { return m_rest.empty(); }

private:
    Bytes m_rest;
    bool m_ranOut = false;
};

std::string CheckEnvelope(Bytes bytes)
{
    if (bytes.size() < kHeaderBytes + kChecksumBytes) {
        return fmt::format("{} bytes are too few for a code set", bytes.size());
    }
    if (bytes.size() > CodesetBinary::kMaximumBytes) {
        return fmt::format("{} bytes are more than a code set's {}", bytes.size(),
                           CodesetBinary::kMaximumBytes);
    }
    if (bytes[0] != 'T' || bytes[1] != 'R') {
        return "it does not begin as a code set does";
    }
    if (bytes[2] != kVersion) {
        return fmt::format("version {} is unknown", bytes[2]);
    }
    // A truncated or extended binary fails here, which names the fault better than the checksum.
    const std::size_t length = bytes[6] + std::size_t{bytes[7]} * 256;
    if (length != bytes.size()) {
        return fmt::format("{} bytes came where it says {}", bytes.size(), length);
    }
    const Bytes checksum = bytes.last(kChecksumBytes);
    if (Checksum(bytes.first(length - kChecksumBytes)) != (checksum[0] | checksum[1] << 8)) {
        return "the checksum does not match";
    }
    return bytes[5] == 0 ? "" : "a byte that must be 0 is not";
}

std::vector<std::uint8_t> ReadSteps(ByteReader& reader, std::size_t count)
{
    std::vector<std::uint8_t> steps;
    for (std::size_t i = 0; i < count && !reader.RanOut(); i += 2) {
        const std::uint8_t pair = reader.Byte();
        steps.push_back(pair & 0xf);
        steps.push_back(pair >> 4);
    }
    return steps;
}

RawSequence ReadSequence(ByteReader& reader)
{
    const std::size_t press = reader.Byte();
    const std::size_t repeat = reader.Byte();
    std::vector<std::uint8_t> steps = ReadSteps(reader, press + repeat);
    // ReadSteps returns whole bytes, which is one step too many for an odd number, or fewer if the
    // bytes ran out. Both cases are refused later.
    steps.resize(press + repeat);
    const auto middle = steps.begin() + static_cast<std::ptrdiff_t>(press);
    return {.press = {steps.begin(), middle}, .repeat = {middle, steps.end()}};
}

std::string CheckSteps(const CodesetGroup& group, const std::vector<std::uint8_t>& steps)
{
    // An odd number ends with a mark: no space would separate it from the next frame.
    if (steps.empty() || steps.size() % 2 != 0) {
        return fmt::format("a raw sequence of {} steps does not end dark", steps.size());
    }
    std::uint32_t total = 0;
    for (const std::uint8_t step : steps) {
        if (step >= group.rawDurationsUs.size()) {
            return fmt::format("raw duration {} of {}", step, group.rawDurationsUs.size());
        }
        total += group.rawDurationsUs[step];
    }
    // A held key sends frames without end: short ones would keep the blaster's task busy.
    if (total < CodesetBinary::kMinimumFrameUs) {
        return fmt::format("a raw frame of {} us is too short", total);
    }
    return "";
}

std::string CheckRaw(const CodesetGroup& group)
{
    if (group.carrierKHz == 0) {
        return "a raw group has no carrier";
    }
    if (group.rawDurationsUs.size() > kMaximumDurations) {
        return fmt::format("{} raw durations are too many", group.rawDurationsUs.size());
    }
    if (std::ranges::find(group.rawDurationsUs, 0) != group.rawDurationsUs.end()) {
        return "a raw duration is 0";
    }
    for (const RawSequence& sequence : group.rawSequences) {
        std::string why = CheckSteps(group, sequence.press);
        if (why.empty() && !sequence.repeat.empty()) {
            why = CheckSteps(group, sequence.repeat);
        }
        if (!why.empty()) {
            return why;
        }
    }
    return "";
}

std::string CheckGroup(const CodesetGroup& group)
{
    if (FindProtocol(static_cast<std::uint8_t>(group.protocol)) == nullptr) {
        return fmt::format("protocol {} is unknown", static_cast<unsigned>(group.protocol));
    }
    if (group.carrierKHz != 0 &&
        (group.carrierKHz < kLowestKHz || group.carrierKHz > kHighestKHz)) {
        return fmt::format("a carrier of {} kHz", group.carrierKHz);
    }
    if (group.minimumFrames > kMaximumFrames) {
        return fmt::format("a press of {} frames", group.minimumFrames);
    }
    if (group.protocol == Protocol::kRaw) {
        return CheckRaw(group);
    }
    return group.rawSequences.empty() ? "" : "a group of a protocol holds raw sequences";
}

CodesetGroup ReadGroup(ByteReader& reader)
{
    CodesetGroup group;
    group.protocol = Protocol{reader.Byte()};
    group.carrierKHz = reader.Byte();
    group.minimumFrames = reader.Byte();
    const std::uint8_t sequences = reader.Byte();
    if (group.protocol != Protocol::kRaw) {
        group.rawSequences.resize(sequences);  // CheckGroup refuses any other number than 0
        return group;
    }
    const std::uint8_t durations = reader.Byte();
    for (unsigned i = 0; i < durations && !reader.RanOut(); ++i) {
        group.rawDurationsUs.push_back(static_cast<std::uint16_t>(reader.Number(2)));
    }
    for (unsigned i = 0; i < sequences && !reader.RanOut(); ++i) {
        group.rawSequences.push_back(ReadSequence(reader));
    }
    return group;
}

std::string CheckKey(const CodesetKey& key, std::span<const CodesetGroup> groups)
{
    if (key.ueiKey == 0 || key.ueiKey > kLastUeiKey) {
        return fmt::format("key {} does not exist", key.ueiKey);
    }
    if (key.group >= groups.size()) {
        return fmt::format("key {}: group {} of {}", key.ueiKey, key.group, groups.size());
    }
    const CodesetGroup& group = groups[key.group];
    const ProtocolRow& row = *FindProtocol(static_cast<std::uint8_t>(group.protocol));
    if (!FitsProtocol(row, key.scancode)) {
        return fmt::format("key {}: scancode {:#x} does not fit {}", key.ueiKey, key.scancode,
                           row.name);
    }
    if (group.protocol == Protocol::kRaw && key.scancode >= group.rawSequences.size()) {
        return fmt::format("key {}: raw sequence {} of {}", key.ueiKey, key.scancode,
                           group.rawSequences.size());
    }
    return "";
}

std::string ReadGroups(ByteReader& reader, unsigned count, std::vector<CodesetGroup>& groups)
{
    for (unsigned i = 0; i < count; ++i) {
        groups.push_back(ReadGroup(reader));
        std::string why = reader.RanOut() ? "it ends in its groups" : CheckGroup(groups.back());
        if (!why.empty()) {
            return why;
        }
    }
    return "";
}

std::string ReadKeys(ByteReader& reader, unsigned count, std::span<const CodesetGroup> groups,
                     std::vector<CodesetKey>& keys)
{
    for (unsigned i = 0; i < count; ++i) {
        const std::uint8_t number = reader.Byte();
        const std::uint8_t group = reader.Byte();
        const CodesetKey key{number, group, reader.Number(4)};
        std::string why = reader.RanOut() ? "it ends in its keys" : CheckKey(key, groups);
        // Find searches binarily, so the keys must ascend.
        if (why.empty() && !keys.empty() && key.ueiKey <= keys.back().ueiKey) {
            why = fmt::format("key {} stands behind key {}", key.ueiKey, keys.back().ueiKey);
        }
        if (!why.empty()) {
            return why;
        }
        keys.push_back(key);
    }
    return "";
}

}  // namespace

std::optional<CodesetBinary> CodesetBinary::Parse(std::span<const std::uint8_t> bytes,
                                                  std::string& why)
{
    why = CheckEnvelope(bytes);
    if (!why.empty()) {
        return std::nullopt;
    }
    ByteReader reader(bytes.subspan(kHeaderBytes, bytes.size() - kHeaderBytes - kChecksumBytes));
    CodesetBinary codeset;
    why = ReadGroups(reader, bytes[3], codeset.m_groups);
    if (why.empty()) {
        why = ReadKeys(reader, bytes[4], codeset.m_groups, codeset.m_keys);
    }
    if (why.empty() && !reader.AtEnd()) {
        why = "bytes stand behind its last key";
    }
    return why.empty() ? std::optional(std::move(codeset)) : std::nullopt;
}

const CodesetKey* CodesetBinary::Find(std::uint8_t ueiKey) const
{
    const auto found = std::ranges::lower_bound(m_keys, ueiKey, {}, &CodesetKey::ueiKey);
    return found != m_keys.end() && found->ueiKey == ueiKey ? &*found : nullptr;
}

}  // namespace Lpm
