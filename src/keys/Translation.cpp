// SPDX-License-Identifier: Apache-2.0

#include "codesets/Trellan_ServiceCodesetHandler.h"
#include "keys/KeyLog.h"
#include "keys/KeyResolution.h"
#include "keys/KeyTables.h"
#include "keys/Trellan_ServiceKeyHandler.h"

namespace TrellanService {

std::uint32_t Trellan_ServiceKeyHandler::TranslateOrluToUEI(std::uint32_t orluKey,
                                                            const std::string& codeset) const
{
    std::uint32_t ueiKey = FixedUEIKey(static_cast<std::uint8_t>(orluKey));
    if (ueiKey == kInvalidUEIKey) {
        // A code set that is not in the map has no bits: only the candidates without a condition
        // fit.
        const auto found = m_codesets.FindCodeset(codeset);
        const bool known = found != m_codesets.GetCodesets().end();
        ueiKey = ResolveKey(orluKey, codeset, known ? found->second.ambiguousKeyBitMap : 0);
    }
    kKeyLog.Prefix("TranslateOrluToUEI")
        .Log(3, "Orlu Key {} translated to UEI key {}", orluKey, ueiKey);
    return ueiKey;
}

}  // namespace TrellanService
