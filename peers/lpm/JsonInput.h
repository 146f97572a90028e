// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>

#include <json/value.h>

namespace Lpm {

/// Parses a UTF-8 JSON text of at most `Limits::kFrameBytes` and `Limits::kJsonDepth` levels.
/// Nothing, with the reason in one line in `why`, for any other text.
std::optional<Json::Value> ParseJson(std::string_view text, std::string& why);

/// Whether `value` is an object without other members than `names`; `why` gets the reason if not.
bool HasOnly(const Json::Value& value, std::initializer_list<std::string_view> names,
             std::string& why);

/// Reads members of one object. An absent member gives nothing. A member of another type or out of
/// its range gives nothing too; `Why` keeps the first such reason.
class JsonMembers {
public:
    explicit JsonMembers(const Json::Value& object) : m_object(object) {}

    std::optional<std::int64_t> Integer(const char* name, std::int64_t lowest,
                                        std::int64_t highest);
    std::optional<bool> Bool(const char* name);
    /// Bytes in hexadecimal.
    std::optional<std::string> Hex(const char* name);
    /// Null if absent.
    const Json::Value* Array(const char* name);

    /// Empty if all members that were read are valid.
    const std::string& Why() const { return m_why; }

private:
    const Json::Value* Take(const char* name, bool (Json::Value::*is)() const, const char* kind);
    void Fail(const char* name, const std::string& what);

    const Json::Value& m_object;
    std::string m_why;
};

}  // namespace Lpm
