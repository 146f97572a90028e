// SPDX-License-Identifier: Apache-2.0

#include <algorithm>
#include <set>

#include "codesets/CodesetLog.h"
#include "codesets/Trellan_ServiceCodesetHandler.h"

using TrellanServiceMessages::SrcCiCodeMessage_t;

namespace TrellanService {

void Trellan_ServiceCodesetHandler::HandlePCSourceList(const SrcCiCodeMessage_t& sourceList)
{
    switch (m_sendKeyState) {
        case SendKeyStartup:
            if (!compareCodesets(sourceList)) {
                FollowChangedList(sourceList);
                // `syncCodesets` would block on a connection test. Without the cloud it is left to
                // the cloud timer, which begins the sync once the cloud is found.
                if (m_server.IsCloudConnected()) {
                    syncCodesets();
                }
                break;
            }
            // The blaster kept these code sets over the restart. The whitelist may have changed
            // since.
            AddWhiteListStatus();
            SetSendKeyState(SendKeyReady);
            break;
        case SendKeyReady:
            if (!compareCodesets(sourceList)) {
                FollowChangedList(sourceList);
                syncCodesets();
                break;
            }
            // The client hears that the list is in force, although nothing had to be loaded.
            m_server.NotifyBlasterSyncComplete(true);
            break;
        case SendKeyOSM:
            // The guided test owns the blaster. The sync at the end of the test takes this map.
            cacheCodesets(sourceList);
            break;
        case SendKeySyncPending:
            if (m_server.IsCloudConnected()) {
                kCodesetLog.Put(3, "aborting current codeset sync");
                // A sync may be under way; its next step begins it anew with this map.
                m_abortSync = true;
            }
            cacheCodesets(sourceList);
            break;
    }
}

void Trellan_ServiceCodesetHandler::FollowChangedList(const SrcCiCodeMessage_t& sourceList)
{
    cacheCodesets(sourceList);
    SetSendKeyState(SendKeySyncPending);
}

bool Trellan_ServiceCodesetHandler::compareCodesets(const SrcCiCodeMessage_t& sourceList)
{
    if (!m_initialized) {
        InitCodesetMap();
    }
    const bool match = std::ranges::all_of(
        sourceList.cicode(), [this](const std::string& name) { return m_codesets.contains(name); });
    kCodesetLog.Put(3, match ? "The codesets match, we can send keys"
                             : "The codesets don't match, we need to sync");
    return match;
}

void Trellan_ServiceCodesetHandler::cacheCodesets(const SrcCiCodeMessage_t& sourceList)
{
    kCodesetLog.Put(3, "setting trs codeset map to match the source list codesets");
    const std::set<std::string_view> wanted(sourceList.cicode().begin(), sourceList.cicode().end());
    std::erase_if(m_codesets, [&wanted](const auto& row) { return !wanted.contains(row.first); });
    for (const std::string& name : sourceList.cicode()) {
        std::uint16_t devNum = 0;
        // An entry that stays keeps its fingerprint and key map, which only a sync could bring
        // back.
        if (name.empty() || m_codesets.contains(name) || !devStringTodevNum(name, devNum)) {
            continue;
        }
        m_codesets[name].devNum = devNum;
        kCodesetLog.Log(3, "Codeset = {}", name);
    }
}

}  // namespace TrellanService
