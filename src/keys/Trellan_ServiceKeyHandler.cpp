// SPDX-License-Identifier: Apache-2.0

#include "keys/Trellan_ServiceKeyHandler.h"

#include "codesets/Trellan_ServiceCodesetHandler.h"
#include "keys/KeyLog.h"
#include "orlu/MfgData.h"

namespace TrellanService {

namespace {

bool ProductAllowsContinuous()
{
    auto capability = MfgData::Get("irBlasterCapability");
    if (!capability) {
        capability = MfgData::Get("testflagirBlasterCapability");
    }
    // A capability that is stated decides alone, "full" being the only permission.
    if (capability) {
        return *capability == "full";
    }
    // Without it, every known product but one may. A product without a type may not: pauses are the
    // safe choice.
    const auto productType = MfgData::Get("productType");
    return productType && *productType != "marlow-tenpenny";
}

}  // namespace

Trellan_ServiceKeyHandler::Trellan_ServiceKeyHandler(Trellan_ServiceBlasterProxy* blasterProxy,
                                                     const Trellan_ServiceCodesetHandler& codesets,
                                                     NotifyTargetTaskIF* task)
    : m_blasterProxy(blasterProxy),
      m_timer(APTimer::Create(task, "KeyHoldoffTimer")),
      m_allowContinuous(ProductAllowsContinuous()),
      m_codesets(codesets),
      m_endCallback([this](const std::string&) { HandleBlastState(BlastEndDone, "", 255); }, task),
      m_quietCallback([](const std::string&) {}, task)
{
    kKeyLog.Log(3, "Trellan_ServiceKeyHandler: m_allowContinuous is {}", m_allowContinuous);
}

Trellan_ServiceKeyHandler::~Trellan_ServiceKeyHandler()
{
    // The timer's callback refers to this object.
    m_timer->Shutdown();
}

void Trellan_ServiceKeyHandler::SetKeyDelay(std::uint32_t keyDelay, std::uint32_t maxBlastTime)
{
    m_keyDelay = keyDelay;
    m_maxBlastTime = maxBlastTime;
}

bool Trellan_ServiceKeyHandler::GoesByInfrared(std::string_view codeset) const
{
    // In any other state the blaster may lack the code set, or a guided test owns the blaster.
    return !codeset.empty() && m_codesets.GetSendKeyState() == SendKeyReady;
}

bool Trellan_ServiceKeyHandler::MayBlastContinuously(std::string_view codeset) const
{
    if (m_allowContinuous) {
        return true;
    }
    // A code set outside of the map was never compared with the whitelist, so it counts as unsafe.
    const auto found = m_codesets.FindCodeset(codeset);
    return found != m_codesets.GetCodesets().end() && found->second.safeToBlast;
}

}  // namespace TrellanService
