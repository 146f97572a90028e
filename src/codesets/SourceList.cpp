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
                // Without the cloud the sync waits for the cloud timer, which starts it once the
                // cloud is found.
                if (m_server.IsCloudConnected()) {
                    syncCodesets();
                }
                break;
            }
            // The store says that the blaster still holds these code sets, so no sync is needed.
            AddWhiteListStatus();
            SetSendKeyState(SendKeyReady);
            break;
        case SendKeyReady:
            if (!compareCodesets(sourceList)) {
                FollowChangedList(sourceList);
                syncCodesets();
                break;
            }
            // The client waits for the end of a sync, although there is none.
            m_server.NotifyBlasterSyncComplete(true);
            break;
        // The blaster belongs to the guided test, whose end starts a sync with this list.
        case SendKeyOSM:
            cacheCodesets(sourceList);
            break;
        case SendKeySyncPending:
            if (m_server.IsCloudConnected()) {
                kCodesetLog.Put(3, "aborting current codeset sync");
                // A step of the running sync cannot be taken back; its answer restarts the sync.
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
    // Entries that stay keep their key map and checksum: a new list often changes one code set
    // only.
    std::erase_if(m_codesets, [&wanted](const auto& row) { return !wanted.contains(row.first); });
    for (const std::string& name : sourceList.cicode()) {
        std::uint16_t devNum = 0;
        // A name without a device number cannot be loaded, and would end every sync.
        if (name.empty() || m_codesets.contains(name) || !devStringTodevNum(name, devNum)) {
            continue;
        }
        m_codesets[name].devNum = devNum;
        kCodesetLog.Log(3, "Codeset = {}", name);
    }
}

}  // namespace TrellanService
