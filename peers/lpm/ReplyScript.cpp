// SPDX-License-Identifier: Apache-2.0

#include "lpm/ReplyScript.h"

#include <charconv>
#include <utility>

#include "lpm/BlasterProtocol.h"
#include "lpm/JsonInput.h"

namespace Lpm {

namespace {

constexpr std::int64_t kMaximumDelayMs = 3600000;
constexpr std::int64_t kMaximumTimes = 1000000000;
/// The bits of a status that its readers test; see `Status`.
constexpr std::uint8_t kRefusalBits = 7;

/// Parses a text such as "0x22".
std::optional<std::uint8_t> ParseCommand(const Json::Value& value)
{
    if (!value.isString()) {
        return std::nullopt;
    }
    const std::string text = value.asString();
    const char* end = text.data() + text.size();
    std::uint8_t command = 0;
    if (!text.starts_with("0x")) {
        return std::nullopt;
    }
    const auto [stop, error] = std::from_chars(text.data() + 2, end, command, 16);
    return error == std::errc{} && stop == end ? std::optional(command) : std::nullopt;
}

}  // namespace

bool ScriptedReply::IsTaken(std::uint8_t command) const
{
    if (static_cast<Command>(command) == Command::kEndKey) {
        return true;
    }
    if (status) {
        return (*status & kRefusalBits) == 0;
    }
    // A raw reply too short to hold a status does not say that the frame was refused.
    return !raw || raw->size() < 2 || (static_cast<std::uint8_t>((*raw)[1]) & kRefusalBits) == 0;
}

std::string ScriptedReply::Reply(std::string normal) const
{
    if (raw) {
        return *raw;
    }
    if (status) {
        normal[1] = static_cast<char>(*status);
    }
    return normal;
}

bool ReplyScript::Load(std::string_view text, std::string& why)
{
    const auto script = ParseJson(text, why);
    if (!script || !HasOnly(*script, {"replies"}, why)) {
        return false;
    }
    return Replace((*script)["replies"], why);
}

bool ReplyScript::Replace(const Json::Value& replies, std::string& why)
{
    if (!replies.isArray()) {
        why = "\"replies\" is not an array";
        return false;
    }
    std::vector<Entry> entries;
    for (const Json::Value& value : replies) {
        auto entry = ParseEntry(value, why);
        if (!entry) {
            why.insert(0, "reply " + std::to_string(entries.size()) + ": ");
            return false;
        }
        entries.push_back(std::move(*entry));
    }
    // Only now: a fault in a later entry leaves the old script in force.
    m_entries = std::move(entries);
    return true;
}

std::optional<ReplyScript::Entry> ReplyScript::ParseEntry(const Json::Value& value,
                                                          std::string& why)
{
    if (!HasOnly(value, {"command", "status", "times", "delayMs", "silent", "bulkResult", "raw"},
                 why)) {
        return std::nullopt;
    }
    const auto command = ParseCommand(value["command"]);
    if (!command) {
        why = "\"command\" is no text like \"0x22\"";
        return std::nullopt;
    }
    JsonMembers members(value);
    Entry entry;
    entry.key = *command;
    entry.times = static_cast<std::uint32_t>(
        members.Integer("times", 0, kMaximumTimes).value_or(Peers::kForever));
    if (const auto status = members.Integer("status", 0, 255)) {
        entry.reply.status = static_cast<std::uint8_t>(*status);
    }
    entry.reply.delay =
        std::chrono::milliseconds(members.Integer("delayMs", 0, kMaximumDelayMs).value_or(0));
    entry.reply.silent = members.Bool("silent").value_or(false);
    if (const auto result = members.Integer("bulkResult", -3, 0)) {
        entry.reply.bulkResult = static_cast<std::int32_t>(*result);
    }
    entry.reply.raw = members.Hex("raw");
    why = members.Why();
    return why.empty() ? std::optional(entry) : std::nullopt;
}

ScriptedReply ReplyScript::Take(std::uint8_t command)
{
    return Peers::TakeReply(m_entries, command);
}

}  // namespace Lpm
