// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "ProtoBufs/Trellan_Service.pb.h"
#include "codesets/BlasterSyncIF.h"
#include "codesets/CodesetServerIF.h"

namespace TrellanService {

/// What is known of one code set.
struct CodesetEntry {
    std::uint32_t devNum = 0;              ///< Its number in the blaster, 16 bits.
    std::uint32_t ambiguousKeyBitMap = 0;  ///< Bits of `kAmbiguousKeys`.
    std::string checksum;                  ///< MD5 of the binary in hexadecimal; empty: not loaded.
    bool safeToBlast = false;              ///< May be sent without pause.
    std::vector<std::uint8_t> ueiKeys;     ///< Its UEI keys, in the blaster's order.
};

/// By name, byte by byte: the order in which code sets are loaded and written to the file.
using CodesetMap = std::map<std::string, CodesetEntry, std::less<>>;

/// Whether keys may go out by infrared.
enum SendKeyState : std::uint32_t {
    SendKeyStartup = 0,      ///< No source list handled yet.
    SendKeyReady = 1,        ///< The blaster is in step with the source list.
    SendKeyOSM = 2,          ///< A guided test owns the blaster.
    SendKeySyncPending = 3,  ///< The blaster must be synced, or a sync is running.
};

/// Keeps track of the code sets in the blaster, also over a restart, and follows the product's
/// source list. On the server task; lives until the process ends. An empty map is always safe: the
/// blaster is then loaded anew.
class Trellan_ServiceCodesetHandler {
public:
    static Trellan_ServiceCodesetHandler& getInstance();

    /// Both must outlive the handler.
    Trellan_ServiceCodesetHandler(CodesetServerIF& server, BlasterSyncIF& sync)
        : m_server(server), m_sync(sync)
    {
    }
    Trellan_ServiceCodesetHandler(const Trellan_ServiceCodesetHandler&) = delete;
    Trellan_ServiceCodesetHandler& operator=(const Trellan_ServiceCodesetHandler&) = delete;

    /// A source list from the product controller.
    void HandlePCSourceList(const TrellanServiceMessages::SrcCiCodeMessage_t& sourceList);

    /// Whether every name of the list is in the map, which is read from its file first if that has
    /// not happened yet. Names that the list lacks do not count.
    bool compareCodesets(const TrellanServiceMessages::SrcCiCodeMessage_t& sourceList);

    /// Makes the map hold exactly the list's code sets. Entries that stay keep their data. A name
    /// that is not a code set name is left out.
    void cacheCodesets(const TrellanServiceMessages::SrcCiCodeMessage_t& sourceList);

    /// Starts a sync: a reset, each code set in order of name, a key map query for each, then
    /// whitelist, `SendKeyReady` and the file. Each step starts from the answer to the step before,
    /// so a failed step ends the sync; it is not tried again here. Replaces a sync that is still
    /// running. False if the cloud is out of reach; then nothing was changed.
    bool syncCodesets();

    /// Stores the fingerprint of a binary in the entry of that name; ignored if there is none.
    void StoreCodesetChecksum(const char* name, const std::uint8_t* data, std::uint32_t length);

    /// Fills the map from the file; one that is missing or damaged gives an empty map.
    void InitCodesetMap();

    /// Writes the map to the file. A failure is logged, and the old file is kept.
    void StoreCodesetConfig();

    /// Sets `safeToBlast` of every entry from the whitelist file. A file that is not a whitelist
    /// changes nothing; without a file no code set is approved.
    void AddWhiteListStatus();

    /// "uninitialized" until a list was applied.
    const std::string& GetWhiteListVersion() const { return m_whiteListVersion; }

    /// From any task. False, with a log line, for a name without a device number. A valid name is a
    /// capital letter of a known class, followed by decimal digits only.
    static bool devStringTodevNum(const std::string& name, std::uint16_t& devNum);

    /// Fills the entry at the position from the blaster's answer to a key map query. Does nothing
    /// if a source list removed that entry.
    void CalculateAmbiguousKeyMap(std::string_view answer);

    /// Puts the position at the first entry.
    void Rewind() { PlaceAt(m_codesets.cbegin()); }

    void SetSendKeyState(SendKeyState state);
    SendKeyState GetSendKeyState() const { return m_sendKeyState; }

    /// The entry of that name, or the end of `GetCodesets`.
    CodesetMap::const_iterator FindCodeset(std::string_view name) const
    {
        return m_codesets.find(name);
    }
    const CodesetMap& GetCodesets() const { return m_codesets; }

    /// For a name that is not in the map: no keys, and the one byte 0xFF in `ueiKey`.
    TrellanServiceMessages::KeyMapMessage_t GetStoredKeyMap(const std::string& name) const;
    bool isKeyInCodeset(std::uint8_t ueiKey, const std::string& name) const;

private:
    static std::string ConfigPath();
    bool ReadEntries(const std::string& text);
    void FollowChangedList(const TrellanServiceMessages::SrcCiCodeMessage_t& sourceList);

    void PlaceAt(CodesetMap::const_iterator entry);
    void Advance();

    /// Calls `step` with the answer, unless another sync has begun by then.
    template <class Answer>
    auto OfThisSync(void (Trellan_ServiceCodesetHandler::*step)(const Answer&))
    {
        return [this, step, sync = m_syncs](const Answer& answer) {
            if (sync == m_syncs) {
                (this->*step)(answer);
            }
        };
    }
    void BlasterReset(const std::string& reply);
    /// True if a new list came since the last step; the sync then begins anew.
    bool RestartedByAbort();
    void LoadCodesetsInBlaster();
    void CodesetLoaded(const LpmServiceMessages::BulkTransferResponse& response);
    void GetAmbiguousKeyMap();
    void KeyMapReceived(const std::string& reply);

    CodesetMap m_codesets;
    // The code set whose answer the sync waits for; empty after the last one. Held by name, because
    // a source list may remove the entry or insert others next to it during the sync.
    std::optional<std::string> m_position;
    std::uint32_t m_syncs = 0;  // number of syncs begun so far
    SendKeyState m_sendKeyState = SendKeyStartup;
    bool m_initialized = false;
    bool m_abortSync = false;
    std::string m_whiteListVersion = "uninitialized";
    CodesetServerIF& m_server;
    BlasterSyncIF& m_sync;
};

}  // namespace TrellanService
