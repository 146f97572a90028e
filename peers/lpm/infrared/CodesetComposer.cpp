// SPDX-License-Identifier: Apache-2.0

#include "infrared/CodesetBinary.h"
#include "infrared/CodesetFormat.h"

#include <fmt/format.h>
#include <boost/crc.hpp>

#include <algorithm>

namespace Lpm {
namespace {

using namespace CodesetFormat;

struct ByteWriter {
    void Number(std::size_t size, std::size_t value)
    {
        for (std::size_t i = 0; i < size; ++i) {
            bytes.push_back(static_cast<std::uint8_t>(value >> 8 * i));
        }
    }

    std::vector<std::uint8_t> bytes;
};

void WriteSequence(ByteWriter& writer, const RawSequence& sequence)
{
    writer.Number(1, sequence.press.size());
    writer.Number(1, sequence.repeat.size());
    std::vector<std::uint8_t> steps = sequence.press;
    steps.insert(steps.end(), sequence.repeat.begin(), sequence.repeat.end());
    // Two steps share a byte; the reader drops the half that fills the last one.
    if (steps.size() % 2 != 0) {
        steps.push_back(0);
    }
    for (std::size_t i = 0; i < steps.size(); i += 2) {
        writer.Number(1, static_cast<std::size_t>(steps[i] | steps[i + 1] << 4));
    }
}

void WriteGroup(ByteWriter& writer, const CodesetGroup& group)
{
    writer.Number(1, static_cast<std::size_t>(group.protocol));
    writer.Number(1, group.carrierKHz);
    writer.Number(1, group.minimumFrames);
    writer.Number(1, group.rawSequences.size());
    if (group.protocol != Protocol::kRaw) {
        return;
    }
    writer.Number(1, group.rawDurationsUs.size());
    for (const std::uint16_t duration : group.rawDurationsUs) {
        writer.Number(2, duration);
    }
    for (const RawSequence& sequence : group.rawSequences) {
        WriteSequence(writer, sequence);
    }
}

bool StepsFitTheirBytes(const CodesetGroup& group)
{
    const auto fits = [](const std::vector<std::uint8_t>& steps) {
        return steps.size() <= 255 &&
               std::ranges::all_of(steps, [](std::uint8_t step) { return step < 16; });
    };
    return std::ranges::all_of(group.rawSequences, [fits](const RawSequence& sequence) {
        return fits(sequence.press) && fits(sequence.repeat);
    });
}

/// Checks for values that do not fit their field and would be read back as something else.
std::string CheckCounts(std::span<const CodesetGroup> groups, std::span<const CodesetKey> keys)
{
    if (groups.size() > 255 || keys.size() > 255) {
        return fmt::format("{} groups and {} keys are too many", groups.size(), keys.size());
    }
    for (const CodesetGroup& group : groups) {
        if (group.protocol != Protocol::kRaw && !group.rawDurationsUs.empty()) {
            return "a group of a protocol holds raw durations";
        }
        if (group.rawSequences.size() > 255 || group.rawDurationsUs.size() > kMaximumDurations ||
            !StepsFitTheirBytes(group)) {
            return "a raw group is too large";
        }
    }
    return "";
}

}  // namespace

std::uint16_t CodesetFormat::Checksum(std::span<const std::uint8_t> bytes)
{
    boost::crc_optimal<16, 0x1021, 0xffff, 0, false, false> crc;
    crc.process_bytes(bytes.data(), bytes.size());
    return crc.checksum();
}

std::optional<std::vector<std::uint8_t>> CodesetBinary::Compose(
    std::span<const CodesetGroup> groups, std::span<const CodesetKey> keys, std::string& why)
{
    why = CheckCounts(groups, keys);
    if (!why.empty()) {
        return std::nullopt;
    }
    std::vector<CodesetKey> sorted(keys.begin(), keys.end());
    std::ranges::stable_sort(sorted, {}, &CodesetKey::ueiKey);
    ByteWriter body;
    std::ranges::for_each(groups, [&body](const auto& group) { WriteGroup(body, group); });
    for (const CodesetKey& key : sorted) {
        body.Number(1, key.ueiKey);
        body.Number(1, key.group);
        body.Number(4, key.scancode);
    }
    ByteWriter whole;
    whole.bytes = {'T', 'R', kVersion};
    whole.Number(1, groups.size());
    whole.Number(1, keys.size());
    whole.Number(1, 0);
    whole.Number(2, kHeaderBytes + body.bytes.size() + kChecksumBytes);
    whole.bytes.insert(whole.bytes.end(), body.bytes.begin(), body.bytes.end());
    whole.Number(2, Checksum(whole.bytes));
    // The reader has the rules of the format; they are checked by reading the result.
    if (!Parse(whole.bytes, why)) {
        return std::nullopt;
    }
    return std::move(whole.bytes);
}

}  // namespace Lpm
