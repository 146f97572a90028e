// SPDX-License-Identifier: Apache-2.0

#include "codesets/AmbiguousKeyMap.h"

#include "codesets/CodesetLog.h"
#include "codesets/Trellan_ServiceCodesetHandler.h"

namespace TrellanService {

BlasterKeyMap ReadBlasterKeyMap(std::string_view answer)
{
    constexpr std::size_t kHead = 2;
    BlasterKeyMap map;
    // The count includes the status byte, so a count of 1 means that there are no keys.
    const std::size_t behindCount = answer.empty() ? 0 : static_cast<std::uint8_t>(answer[0]);
    if (behindCount <= 1 || answer.size() <= kHead) {
        return map;
    }
    for (const char byte : answer.substr(kHead, behindCount - 1)) {
        const auto key = static_cast<std::uint8_t>(byte);
        map.ambiguousKeyBitMap |= AmbiguousKeyBit(key);
        map.ueiKeys.push_back(key);
    }
    return map;
}

void Trellan_ServiceCodesetHandler::CalculateAmbiguousKeyMap(std::string_view answer)
{
    // A source list may have removed the entry after the query went out.
    const auto found = m_position ? m_codesets.find(*m_position) : m_codesets.end();
    if (found == m_codesets.end()) {
        return;
    }
    auto& [name, entry] = *found;
    BlasterKeyMap map = ReadBlasterKeyMap(answer);
    entry.ambiguousKeyBitMap = map.ambiguousKeyBitMap;
    entry.ueiKeys = std::move(map.ueiKeys);
    kCodesetLog.Log(3, "Ambiguous key bit map for codeset {} is 0x{:08x}", name,
                    entry.ambiguousKeyBitMap);
}

}  // namespace TrellanService
