// SPDX-License-Identifier: Apache-2.0

#include "devices/DevicesFile.h"

#include <algorithm>
#include <charconv>
#include <initializer_list>

#include <fmt/format.h>

#include "devices/Json.h"

namespace Lpm::Devices {

namespace {

bool HasOnly(const Json::Value& object, std::initializer_list<std::string_view> known,
             std::string& why)
{
    for (const std::string& member : object.getMemberNames()) {
        if (std::ranges::find(known, member) == known.end()) {
            why = fmt::format("member \"{}\" is unknown", member);
            return false;
        }
    }
    return true;
}

bool ReadText(const Json::Value& object, const char* member, std::string& text, std::string& why)
{
    if (!object[member].isString()) {
        why = fmt::format("\"{}\" is no text", member);
        return false;
    }
    text = object[member].asString();
    return true;
}

bool IsName(const std::string& text)
{
    constexpr std::string_view kLetters = "abcdefghijklmnopqrstuvwxyz0123456789_-";
    return !text.empty() && text.size() <= kMaxName &&
           text.find_first_not_of(kLetters) == std::string::npos;
}

std::optional<std::uint32_t> ReadHex(std::string_view text)
{
    std::uint32_t value = 0;
    if (!text.starts_with("0x")) {
        return std::nullopt;
    }
    text.remove_prefix(2);
    const auto* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, value, 16);
    if (error != std::errc{} || stop != end) {
        return std::nullopt;
    }
    return value;
}

/// Reads one table from code to action. A code may have only the bits of `bits`.
template <typename Code>
bool ReadActions(const Json::Value& table, const std::string& name, DeviceType type,
                 std::uint32_t bits, std::map<Code, const Action*>& actions, std::string& why)
{
    if (!table.isObject() || table.size() > kMaxCodes) {
        why = fmt::format("\"{}\" is no object of at most {} codes", name, kMaxCodes);
        return false;
    }
    for (const std::string& key : table.getMemberNames()) {
        const auto code = ReadHex(key);
        if (!code || (*code & ~bits) != 0) {
            why = fmt::format("\"{}\" in \"{}\" is no code such as 0x{:x}", key, name, bits);
            return false;
        }
        const Json::Value& word = table[key];
        const Action* action = word.isString() ? FindAction(type, word.asString()) : nullptr;
        if (action == nullptr) {
            why = fmt::format("\"{}\" in \"{}\" stands for nothing that the device can do", key,
                              name);
            return false;
        }
        // JSON refuses equal names, but 0x1 and 0x01 are the same code.
        if (!actions.emplace(static_cast<Code>(*code), action).second) {
            why = fmt::format("\"{}\" in \"{}\" stands there twice", key, name);
            return false;
        }
    }
    return true;
}

bool ReadDevice(const Json::Value& value, DeviceDescription& device, std::string& why)
{
    if (!value.isObject()) {
        why = "it is no object";
        return false;
    }
    std::string type;
    std::string protocol;
    if (!HasOnly(value, {"name", "type", "protocol", "codes", "cec"}, why) ||
        !ReadText(value, "name", device.name, why) || !ReadText(value, "type", type, why) ||
        !ReadText(value, "protocol", protocol, why)) {
        return false;
    }
    const auto knownType = DeviceTypeByName(type);
    const auto knownProtocol = ProtocolByName(protocol);
    if (!IsName(device.name) || !knownType || !knownProtocol) {
        why = fmt::format("\"{}\" is unknown", !IsName(device.name) ? "name"
                                               : !knownType         ? "type"
                                                                    : "protocol");
        return false;
    }
    device.type = *knownType;
    device.protocol = *knownProtocol;
    if (!ReadActions(value["codes"], "codes", device.type, InfoOf(device.protocol).scancodeBits,
                     device.codes, why)) {
        return false;
    }
    return !value.isMember("cec") ||
           ReadActions(value["cec"], "cec", device.type, 0xff, device.cec, why);
}

bool Holds(const std::vector<DeviceDescription>& devices, const std::string& name)
{
    return std::ranges::find(devices, name, &DeviceDescription::name) != devices.end();
}

}  // namespace

std::optional<std::vector<DeviceDescription>> ParseDevicesFile(const std::string& text,
                                                               std::string& why)
{
    Json::Value root;
    if (!ParseObject(text, root, why) || !HasOnly(root, {"devices"}, why)) {
        return std::nullopt;
    }
    const Json::Value& list = root["devices"];
    if (!list.isArray() || list.size() > kMaxDevices) {
        why = fmt::format("\"devices\" is no list of at most {} devices", kMaxDevices);
        return std::nullopt;
    }
    std::vector<DeviceDescription> devices;
    for (Json::ArrayIndex i = 0; i < list.size(); ++i) {
        DeviceDescription device;
        if (!ReadDevice(list[i], device, why)) {
            why = fmt::format("device {}: {}", i + 1, why);
            return std::nullopt;
        }
        if (Holds(devices, device.name)) {
            why = fmt::format("device {}: the name \"{}\" is taken", i + 1, device.name);
            return std::nullopt;
        }
        devices.push_back(std::move(device));
    }
    return devices;
}

}  // namespace Lpm::Devices
