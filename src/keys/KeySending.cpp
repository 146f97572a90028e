// SPDX-License-Identifier: Apache-2.0

#include <algorithm>
#include <iterator>
#include <utility>

#include <fmt/format.h>

#include "blaster/Trellan_ServiceBlasterProxy.h"
#include "keys/KeyLog.h"
#include "keys/KeyTables.h"
#include "keys/Trellan_ServiceKeyHandler.h"

namespace TrellanService {

namespace {

constexpr std::uint8_t kSinglePress = 0x80;
constexpr std::size_t kHistoryLines = 50;

}  // namespace

// NOLINTNEXTLINE(performance-unnecessary-value-param): by value, as all three take it
void Trellan_ServiceKeyHandler::sendSingleKey(std::string codeset, std::uint32_t orluKey,
                                              const StringCallback& callback)
{
    if (GoesByInfrared(codeset)) {
        sendKey(codeset, orluKey, kSinglePress, callback);
        return;
    }
    // A CEC key is held until its release, and a single press brings no release.
    kKeyLog.Put(1, "CEC key press must have separate press and release, no single key press");
    callback("");
}

void Trellan_ServiceKeyHandler::sendContinuousKey(std::string codeset, std::uint32_t orluKey,
                                                  const StringCallback& callback, bool forceBlast)
{
    if (!forceBlast && !GoesByInfrared(codeset)) {
        kKeyLog.Log(3, "Sending Orlu key {} to LPM CEC", orluKey);
        m_blasterProxy->SendCecKeyPress(orluKey, callback);
        return;
    }
    // The state machine reports nothing back, so the caller is answered now, even if it drops the
    // press.
    HandleBlastState(BlastPress, std::move(codeset), orluKey);
    callback("");
}

// NOLINTNEXTLINE(performance-unnecessary-value-param): by value, as all three take it
void Trellan_ServiceKeyHandler::sendEndKey(std::string codeset, const StringCallback& callback,
                                           bool forceBlast)
{
    if (!forceBlast && !GoesByInfrared(codeset)) {
        m_blasterProxy->SendCecKeyRelease(callback);
        kKeyLog.Put(3, "CEC END key press ");
        return;
    }
    HandleBlastState(BlastRelease, "", kInvalidUEIKey);
    callback("");
    kKeyLog.Put(3, "UEI END Key Press ");
}

void Trellan_ServiceKeyHandler::sendKey(const std::string& codeset, std::uint32_t orluKey,
                                        std::uint8_t flag, const StringCallback& callback)
{
    const std::uint32_t ueiKey = TranslateOrluToUEI(orluKey, codeset);
    // The frame goes out all the same. No code set has key 255, so the blaster refuses it and the
    // caller of a single press gets that status.
    if (ueiKey == kInvalidUEIKey) {
        kKeyLog.Log(2, "No UEI mapping for key, sending INVALID {}", orluKey);
    }
    // The blaster gets the power key as a single press, even if it is held.
    if (ueiKey == UEIKeyNamesPB::kKey_POWER) {
        flag = kSinglePress;
    }
    m_blasterProxy->SendBlasterKey(codeset, static_cast<std::uint8_t>(ueiKey), flag, callback);
    // Only the numbers are kept; the text is made when it is asked for, not on the path of a key.
    AddToHistory({codeset, orluKey, ueiKey, flag});
    kKeyLog.Log(3, "UEI Key Press: {} code set: {} Key Flag: {} corresponding Orlu key: {}", ueiKey,
                codeset, flag, orluKey);
}

void Trellan_ServiceKeyHandler::AddToHistory(SentKey key)
{
    m_keyHistory.push_back(std::move(key));
    if (m_keyHistory.size() > kHistoryLines) {
        m_keyHistory.pop_front();
    }
}

std::deque<std::string> Trellan_ServiceKeyHandler::GetKeyHistory() const
{
    std::deque<std::string> lines;
    std::ranges::transform(m_keyHistory, std::back_inserter(lines), [](const SentKey& key) {
        return fmt::format("Value: {:x} Key: {} ciCode: {} Flag: {:x}\n", key.orluKey,
                           UEIKeySchemaName(key.ueiKey), key.codeset, key.flag);
    });
    return lines;
}

}  // namespace TrellanService
