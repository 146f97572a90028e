// SPDX-License-Identifier: Apache-2.0

#include "orlu/MfgData.h"

#include <map>
#include <mutex>

#include "orlu/DPrint.h"
#include "orlu/StrictJson.h"
#include "orlu/SystemUtils.h"

namespace {

constexpr DPrint kLog("MfgData");
constexpr char kPath[] = "/opt/Orlu/etc/MfgData.json";

using Values = std::map<std::string, std::string>;

// Tasks read it from their own threads.
std::mutex g_mutex;
std::optional<Values> g_values;

Values ReadValues()
{
    const std::optional<std::string> text = SystemUtils::ReadFile(kPath);
    if (!text) {
        kLog.Log(2, "no manufacturing data in {}", kPath);
        return {};
    }
    std::string error;
    const std::optional<Json::Value> root = Orlu::ParseStrictJson(*text, error);
    if (!root || !root->isObject()) {
        kLog.Log(1, "{}: {}", kPath, root ? "not an object" : error);
        return {};
    }
    Values values;
    for (const std::string& key : root->getMemberNames()) {
        const Json::Value& value = (*root)[key];
        if (value.isString()) {
            values.emplace(key, value.asString());
        } else {
            kLog.Log(2, "{}: {} is not a string", kPath, key);
        }
    }
    return values;
}

}  // namespace

std::optional<std::string> MfgData::Get(const std::string& key)
{
    const std::lock_guard lock(g_mutex);
    if (!g_values) {
        g_values = ReadValues();
    }
    const auto found = g_values->find(key);
    return found == g_values->end() ? std::nullopt : std::optional(found->second);
}

void MfgData::Reload()
{
    const std::lock_guard lock(g_mutex);
    g_values.reset();
}
