// SPDX-License-Identifier: Apache-2.0

#include "lpm/codesets/CodesetText.h"

#include "ProtoBufs/UEIKeyNames.pb.h"
#include "infrared/CodesetBinary.h"
#include "infrared/CodesetFormat.h"
#include "orlu/StrictJson.h"

#include <fmt/format.h>

#include <algorithm>
#include <initializer_list>

namespace Lpm {
namespace {

std::string CheckMembers(const Json::Value& object, std::initializer_list<std::string_view> known)
{
    if (!object.isObject()) {
        return "an object is missing";
    }
    for (const std::string& name : object.getMemberNames()) {
        if (std::ranges::find(known, name) == known.end()) {
            return fmt::format("unknown member '{}'", name);
        }
    }
    return "";
}

/// 0 for a name without a key.
std::uint8_t KeyNumber(const std::string& name)
{
    constexpr std::string_view kPrefix = "kKey_";
    UEIKeyNamesPB::ueikey key = UEIKeyNamesPB::kKey_INVALID;
    const std::string full = name.starts_with(kPrefix) ? name : std::string(kPrefix) + name;
    return UEIKeyNamesPB::ueikey_Parse(full, &key) && key > 0 ? static_cast<std::uint8_t>(key) : 0;
}

std::string ReadKey(const std::string& name, const Json::Value& text, const ProtocolRow& row,
                    CodesetKey& key)
{
    key.ueiKey = KeyNumber(name);
    if (key.ueiKey == 0) {
        return fmt::format("'{}' is no key", name);
    }
    if (!text.isString()) {
        return fmt::format("{}: the scancode is no text", name);
    }
    std::string why;
    const std::optional<std::uint32_t> scancode = ParseScancode(row, text.asString(), why);
    key.scancode = scancode.value_or(0);
    return scancode ? "" : fmt::format("{}: {}", name, why);
}

/// Reads a number of one byte. If it is absent, `value` is unchanged.
std::string ReadByte(const Json::Value& group, const char* name, std::uint8_t& value)
{
    const Json::Value& member = group[name];
    if (member.isNull()) {
        return "";
    }
    if (!member.isUInt() || member.asUInt() == 0 || member.asUInt() > 255) {
        return fmt::format("{} is no number from 1 to 255", name);
    }
    value = static_cast<std::uint8_t>(member.asUInt());
    return "";
}

/// The number of the duration in the group. A new duration is added to the group.
std::uint8_t DurationNumber(std::uint16_t duration, std::vector<std::uint16_t>& durations)
{
    const auto known = std::ranges::find(durations, duration);
    const auto number = static_cast<std::uint8_t>(known - durations.begin());
    if (known == durations.end()) {
        durations.push_back(duration);
    }
    return number;
}

std::string ReadRawKey(const std::string& name, const Json::Value& times, CodesetGroup& group,
                       CodesetKey& key)
{
    // The number of steps is one byte and even.
    constexpr unsigned kMaximumSteps = 254;
    constexpr unsigned kLongest = 65535;
    key.ueiKey = KeyNumber(name);
    if (key.ueiKey == 0) {
        return fmt::format("'{}' is no key", name);
    }
    if (!times.isArray() || times.size() > kMaximumSteps || group.rawSequences.size() >= 255) {
        return fmt::format("{}: no list of at most {} durations", name, kMaximumSteps);
    }
    RawSequence sequence;
    for (const Json::Value& time : times) {
        if (!time.isUInt() || time.asUInt() == 0 || time.asUInt() > kLongest) {
            return fmt::format("{}: a duration is no number from 1 to {}", name, kLongest);
        }
        sequence.press.push_back(
            DurationNumber(static_cast<std::uint16_t>(time.asUInt()), group.rawDurationsUs));
        // A step has four bits in the binary.
        if (group.rawDurationsUs.size() > CodesetFormat::kMaximumDurations) {
            return fmt::format("a raw group has more than {} different durations",
                               CodesetFormat::kMaximumDurations);
        }
    }
    key.scancode = static_cast<std::uint32_t>(group.rawSequences.size());
    group.rawSequences.push_back(std::move(sequence));
    return "";
}

std::string ReadKeys(const Json::Value& object, std::size_t number, const ProtocolRow& row,
                     CodesetGroup& group, std::vector<CodesetKey>& keys)
{
    if (!object.isObject()) {
        return "a group has no keys";
    }
    for (const std::string& name : object.getMemberNames()) {
        CodesetKey key{.group = static_cast<std::uint8_t>(number)};
        std::string why = row.coding == Coding::kStored ? ReadRawKey(name, object[name], group, key)
                                                        : ReadKey(name, object[name], row, key);
        if (!why.empty()) {
            return why;
        }
        keys.push_back(key);
    }
    return "";
}

std::string ReadGroup(const Json::Value& object, std::vector<CodesetGroup>& groups,
                      std::vector<CodesetKey>& keys)
{
    std::string why = CheckMembers(object, {"protocol", "carrierKHz", "minimumFrames", "keys"});
    if (!why.empty()) {
        return why;
    }
    const Json::Value& name = object["protocol"];
    const ProtocolRow* row = name.isString() ? FindProtocol(name.asString()) : nullptr;
    if (row == nullptr) {
        return "a group has no known protocol";
    }
    CodesetGroup group{.protocol = row->id};
    why = ReadByte(object, "carrierKHz", group.carrierKHz);
    if (why.empty()) {
        why = ReadByte(object, "minimumFrames", group.minimumFrames);
    }
    if (why.empty()) {
        why = ReadKeys(object["keys"], groups.size(), *row, group, keys);
    }
    groups.push_back(std::move(group));
    return why;
}

std::string ReadCodeset(const Json::Value& root, std::vector<CodesetGroup>& groups,
                        std::vector<CodesetKey>& keys)
{
    std::string why = CheckMembers(root, {"about", "groups"});
    if (!why.empty()) {
        return why;
    }
    if (!root["about"].isNull() && !root["about"].isString()) {
        return "'about' is no text";
    }
    if (!root["groups"].isArray() || root["groups"].size() > 255) {
        return "'groups' is no list of at most 255";
    }
    for (const Json::Value& group : root["groups"]) {
        why = ReadGroup(group, groups, keys);
        if (!why.empty()) {
            return why;
        }
    }
    return "";
}

}  // namespace

std::optional<std::vector<std::uint8_t>> CompileCodeset(std::string_view text, std::string& why)
{
    const std::optional<Json::Value> root = Orlu::ParseStrictJson(text, why);
    if (!root) {
        return std::nullopt;
    }
    std::vector<CodesetGroup> groups;
    std::vector<CodesetKey> keys;
    why = ReadCodeset(*root, groups, keys);
    if (!why.empty()) {
        return std::nullopt;
    }
    return CodesetBinary::Compose(groups, keys, why);
}

}  // namespace Lpm
