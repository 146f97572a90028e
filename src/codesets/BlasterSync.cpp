// SPDX-License-Identifier: Apache-2.0

#include "codesets/CodesetLog.h"
#include "codesets/Trellan_ServiceCodesetHandler.h"

using namespace LpmServiceMessages;

namespace TrellanService {

namespace {

constexpr std::uint32_t kOnlineSession = 2;

/// A reply too short for its status counts as refused.
std::uint32_t Status(const std::string& reply)
{
    return reply.size() < 2 ? 0x0FU : static_cast<std::uint8_t>(reply[1]) & 0x0FU;
}

}  // namespace

bool Trellan_ServiceCodesetHandler::syncCodesets()
{
    if (!m_server.IsCloudConnected() && !m_sync.TestConnection()) {
        return false;
    }
    kCodesetLog.Put(3, "Syncing blaster codesets to source list codesets");
    kCodesetLog.Put(3, "Resetting the blaster");
    // From here the answers to the steps of an earlier sync are dropped: they carry its number.
    m_server.NotifyBlasterSyncComplete(false);
    ++m_syncs;
    // The reset removes every code set, also those that the source list no longer names, or that a
    // guided test left behind.
    m_sync.ResetBlaster(AsyncCallback<std::string>(
        OfThisSync(&Trellan_ServiceCodesetHandler::BlasterReset), m_sync.BlasterTask()));
    return true;
}

void Trellan_ServiceCodesetHandler::BlasterReset(const std::string& reply)
{
    if (const std::uint32_t status = Status(reply); status != 0) {
        // The sync ends here. The state stays `SendKeySyncPending`, in which keys go by CEC.
        kCodesetLog.Log(3, "TRS load blaster codeset failed reason {}", status);
        return;
    }
    Rewind();
    LoadCodesetsInBlaster();
}

bool Trellan_ServiceCodesetHandler::RestartedByAbort()
{
    if (!m_abortSync) {
        return false;
    }
    // A new list has changed the map since the last step. Going on would keep removed code sets in
    // the blaster and miss new ones whose names are before the position.
    m_abortSync = false;
    syncCodesets();
    return true;
}

void Trellan_ServiceCodesetHandler::LoadCodesetsInBlaster()
{
    if (RestartedByAbort()) {
        return;
    }
    if (!m_position) {
        kCodesetLog.Put(3, "Done loading codesets");
        Rewind();
        // The blaster answers a key map query only for a code set that it holds.
        GetAmbiguousKeyMap();
        return;
    }
    // A copy: the callback moves the position, and may be called before `LoadCodeset` returns.
    const std::string name = *m_position;
    kCodesetLog.Log(3, "Loading codeset {} in blaster", name);
    m_sync.LoadCodeset(name, OfThisSync(&Trellan_ServiceCodesetHandler::CodesetLoaded),
                       kOnlineSession);
}

void Trellan_ServiceCodesetHandler::CodesetLoaded(const BulkTransferResponse& response)
{
    if (response.result() != BULK_TRANSFER_SUCCESS) {
        kCodesetLog.Put(3, "TRS load blaster codeset failed");
        return;
    }
    // Success means that the transfer went through. A code set that the blaster itself refused
    // comes here as well, so that it does not keep the others out.
    Advance();
    LoadCodesetsInBlaster();
}

void Trellan_ServiceCodesetHandler::GetAmbiguousKeyMap()
{
    if (RestartedByAbort()) {
        return;
    }
    if (!m_position) {
        kCodesetLog.Put(3, "Done storing ambiguous key bit maps");
        // `safeToBlast` is part of the file, so the whitelist comes before the store.
        AddWhiteListStatus();
        SetSendKeyState(SendKeyReady);
        StoreCodesetConfig();
        m_server.NotifyBlasterSyncComplete(true);
        return;
    }
    kCodesetLog.Log(3, "Getting keymap for codeset {}", *m_position);
    m_sync.GetBlasterKeyMap(
        *m_position,
        AsyncCallback<std::string>(OfThisSync(&Trellan_ServiceCodesetHandler::KeyMapReceived),
                                   m_sync.BlasterTask()));
}

void Trellan_ServiceCodesetHandler::KeyMapReceived(const std::string& reply)
{
    if (const std::uint32_t status = Status(reply); status != 0) {
        kCodesetLog.Log(3, "TRS get key map failed reason {}", status);
        return;
    }
    kCodesetLog.Put(3, "Key map returned successfully");
    CalculateAmbiguousKeyMap(reply);
    Advance();
    GetAmbiguousKeyMap();
}

void Trellan_ServiceCodesetHandler::PlaceAt(CodesetMap::const_iterator entry)
{
    m_position = entry == m_codesets.end() ? std::nullopt : std::optional(entry->first);
}

void Trellan_ServiceCodesetHandler::Advance()
{
    if (m_position) {
        // `upper_bound`, not the next iterator: a source list may have removed the entry at the
        // position.
        PlaceAt(m_codesets.upper_bound(*m_position));
    }
}

}  // namespace TrellanService
