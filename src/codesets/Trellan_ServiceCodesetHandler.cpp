// SPDX-License-Identifier: Apache-2.0

#include "codesets/Trellan_ServiceCodesetHandler.h"

#include <algorithm>

#include "codesets/CodesetLog.h"

using TrellanServiceMessages::KeyMapMessage_t;

namespace TrellanService {

void Trellan_ServiceCodesetHandler::SetSendKeyState(SendKeyState state)
{
    kCodesetLog.Log(3, "Setting send key state to {}", static_cast<std::uint32_t>(state));
    m_sendKeyState = state;
}

KeyMapMessage_t Trellan_ServiceCodesetHandler::GetStoredKeyMap(const std::string& name) const
{
    KeyMapMessage_t message;
    message.set_cicode(name);
    const auto found = FindCodeset(name);
    if (found == m_codesets.end()) {
        kCodesetLog.Log(3, "No keymap found for Codeset {} not loaded in blaster?", name);
        message.set_ueikey("\xFF");
        message.set_numkeys(0);
        return message;
    }
    const auto& keys = found->second.ueiKeys;
    message.set_ueikey(std::string(keys.begin(), keys.end()));
    message.set_numkeys(static_cast<std::uint32_t>(keys.size()));
    return message;
}

bool Trellan_ServiceCodesetHandler::isKeyInCodeset(std::uint8_t ueiKey,
                                                   const std::string& name) const
{
    const auto found = FindCodeset(name);
    if (found == m_codesets.end()) {
        kCodesetLog.Log(3, "Codeset {} not loaded in blaster", name);
        return false;
    }
    const auto& keys = found->second.ueiKeys;
    const bool held = std::ranges::find(keys, ueiKey) != keys.end();
    kCodesetLog.Log(3, "key {} {} in codeset {}", ueiKey, held ? "found" : "NOT", name);
    return held;
}

}  // namespace TrellanService
