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
    // The client learns of the sync before its first step, so that it never gets the end alone.
    m_server.NotifyBlasterSyncComplete(false);
    // From here on the answers of an earlier sync are ignored: see `OfThisSync`.
    ++m_syncs;
    m_sync.ResetBlaster(AsyncCallback<std::string>(
        OfThisSync(&Trellan_ServiceCodesetHandler::BlasterReset), m_sync.BlasterTask()));
    return true;
}

void Trellan_ServiceCodesetHandler::BlasterReset(const std::string& reply)
{
    if (const std::uint32_t status = Status(reply); status != 0) {
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
    // Cleared first: the new sync reads the list as it stands now.
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
        // The blaster has all code sets. Their keys are read back from it, because only the blaster
        // knows what it can send.
        kCodesetLog.Put(3, "Done loading codesets");
        Rewind();
        GetAmbiguousKeyMap();
        return;
    }
    const std::string name = *m_position;  // the answer, which moves the position, may come within
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
        AddWhiteListStatus();
        // After the whitelist: the first key may come as soon as the state is ready, and must find
        // whether it may go on without a pause.
        SetSendKeyState(SendKeyReady);
        // The file is written last. A process that dies before finds an older list, and syncs
        // again.
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
        // By name, not by iterator: a source list may have erased the entry meanwhile.
        PlaceAt(m_codesets.upper_bound(*m_position));
    }
}

}  // namespace TrellanService
