// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>

#include <json/value.h>

namespace Lpm {

/// A JSON text of UTF-8, of at most `Limits::kFrameBytes` and `Limits::kJsonDepth` levels; nothing,
/// and the reason in one line in `why`, for any other.
std::optional<Json::Value> ParseJson(std::string_view text, std::string& why);

/// Whether `value` is an object with no members but these; the reason goes to `why`.
bool HasOnly(const Json::Value& value, std::initializer_list<std::string_view> names,
             std::string& why);

/// Takes members out of one object. A member that is absent gives nothing; one of another type or
/// out of its range gives nothing and the first such reason stays in `Why`.
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

    /// Empty while all members were well.
    const std::string& Why() const { return m_why; }

private:
    const Json::Value* Take(const char* name, bool (Json::Value::*is)() const, const char* kind);
    void Fail(const char* name, const std::string& what);

    const Json::Value& m_object;
    std::string m_why;
};

}  // namespace Lpm
