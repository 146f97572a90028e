// SPDX-License-Identifier: Apache-2.0

#include "cloud/JsonMembers.h"

namespace Cloud {

std::string JsonMembers::Text(const char* name, std::size_t least, std::size_t most)
{
    const Json::Value& value = m_object[name];
    std::string text = value.isString() ? value.asString() : std::string();
    if (!value.isString() || text.size() < least || text.size() > most ||
        text.find('\0') != std::string::npos) {
        m_good = false;
        return {};
    }
    return text;
}

std::uint32_t JsonMembers::Number(const char* name, std::uint32_t most)
{
    const Json::Value& value = m_object[name];
    if (!value.isUInt() || value.asUInt() > most) {
        m_good = false;
        return 0;
    }
    return value.asUInt();
}

}  // namespace Cloud
