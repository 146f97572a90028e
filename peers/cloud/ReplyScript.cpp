// SPDX-License-Identifier: Apache-2.0

#include "cloud/ReplyScript.h"

#include "cloud/CloudService.h"
#include "orlu/StrictJson.h"

#include <algorithm>
#include <array>
#include <utility>

namespace Cloud {

namespace {

constexpr unsigned kMaximumDelayMs = 3600000;
constexpr unsigned kMaximumTimes = 1000000000;
constexpr unsigned kMinimumHttp = 200;
constexpr unsigned kMaximumHttp = 599;

/// Reads a number that may be absent. `why` is set if it is invalid.
std::optional<unsigned> Number(const Json::Value& object, const char* name, unsigned least,
                               unsigned most, std::string& why)
{
    const Json::Value& value = object[name];
    if (value.isNull()) {
        return std::nullopt;
    }
    if (!value.isUInt() || value.asUInt() < least || value.asUInt() > most) {
        why = std::string("\"") + name + "\" is no number from " + std::to_string(least) + " to " +
              std::to_string(most);
        return std::nullopt;
    }
    return value.asUInt();
}

}  // namespace

bool ReplyScript::Load(std::string_view text, std::string& why)
{
    const auto script = Orlu::ParseStrictJson(text, why);
    if (!script) {
        return false;
    }
    if (!script->isObject() || script->size() != 1 || !(*script)["replies"].isArray()) {
        why = "it is no object of \"replies\" alone, an array";
        return false;
    }
    std::vector<Entry> entries;
    for (const Json::Value& value : (*script)["replies"]) {
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
    constexpr std::array<std::string_view, 5> kMembers = {"operation", "http", "times", "delayMs",
                                                          "quota"};
    if (!value.isObject()) {
        why = "it is no object";
        return std::nullopt;
    }
    for (const std::string& name : value.getMemberNames()) {
        if (std::ranges::find(kMembers, name) == kMembers.end()) {
            why = "unknown member \"" + name + "\"";
            return std::nullopt;
        }
    }
    Entry entry;
    why.clear();
    const Json::Value& quota = value["quota"];
    if (!value["operation"].isString() || !IsOperation(value["operation"].asString())) {
        why = "\"operation\" is none";
        return std::nullopt;
    }
    if (!quota.isNull() && !quota.isBool()) {
        why = "\"quota\" is neither true nor false";
    }
    entry.key = value["operation"].asString();
    entry.reply.quota = quota.isBool() && quota.asBool();
    entry.reply.http = Number(value, "http", kMinimumHttp, kMaximumHttp, why);
    entry.times = Number(value, "times", 0, kMaximumTimes, why).value_or(Peers::kForever);
    entry.reply.delay =
        std::chrono::milliseconds(Number(value, "delayMs", 0, kMaximumDelayMs, why).value_or(0));
    return why.empty() ? std::optional(entry) : std::nullopt;
}

ScriptedReply ReplyScript::Take(std::string_view operation)
{
    return Peers::TakeReply(m_entries, operation);
}

}  // namespace Cloud
