// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include <json/value.h>

namespace Cloud {

/// Reads a request's members. A member that is missing, of the wrong type or out of range reads as
/// empty or 0, and `AreGood` is false from then on.
class JsonMembers {
public:
    /// The names in a catalogue are shorter.
    static constexpr std::size_t kTextBytes = 1024;

    explicit JsonMembers(const Json::Value& object) : m_object(object) {}

    /// Text without a null character.
    std::string Text(const char* name, std::size_t least = 0, std::size_t most = kTextBytes);
    std::uint32_t Number(const char* name, std::uint32_t most);

    bool AreGood() const { return m_good; }

private:
    const Json::Value& m_object;
    bool m_good = true;
};

}  // namespace Cloud
