// SPDX-License-Identifier: Apache-2.0

#include "blaster/Trellan_ServiceCecIF.h"

#include "orlu/DPrint.h"

using namespace LpmServiceMessages;

namespace TrellanService {

namespace {

constexpr DPrint kLog("TrellanService");

}  // namespace

Trellan_ServiceCecIF::Trellan_ServiceCecIF(Trellan_Server* server, NotifyTargetTaskIF* task)
    : m_server(server), m_task(task)
{
    kLog.Put(6, __PRETTY_FUNCTION__);
}

Trellan_ServiceCecIF::~Trellan_ServiceCecIF()
{
    kLog.Put(6, __PRETTY_FUNCTION__);
}

void Trellan_ServiceCecIF::LogGetInstance()
{
    kLog.Put(6,
             "static TrellanService::Trellan_ServiceCecIF& "
             "TrellanService::Trellan_ServiceCecIF::GetInstance(TrellanService::Trellan_Server*)");
}

void Trellan_ServiceCecIF::LogReturned() const
{
    kLog.Log(3, "The instance {} of the Trellan_Server LPM Client was returned.", fmt::ptr(this));
}

void Trellan_ServiceCecIF::Initialize()
{
    kLog.Put(6, __PRETTY_FUNCTION__);
    // A connection of its own, over which LpmService sends the messages of the CEC bus.
    m_client = CreateLpmClient("TRSCecIF", m_task);
    m_client->Connect([](const bool& connected) {
        kLog.Put(3, connected ? "TRS CEC IF connected" : "TRS CEC IF not connected");
    });
    const AsyncCallback<IpcCecMessage_t> received(
        [this](const IpcCecMessage_t& message) { ReceiveCecMessage(message); }, m_task);
    if (const auto& router = m_client->Router()) {
        router->AddHandler<IpcCecMessage_t>(
            IPC_CEC_MSG, [received](const IpcCecMessage_t& message, std::uint32_t /*token*/) {
                received(message);
            });
    }
}

bool Trellan_ServiceCecIF::ReceiveCecMessage(const IpcCecMessage_t& /*message*/)
{
    kLog.Put(4, "Received CEC Message from LPM");
    if (!m_client) {
        kLog.Put(1, "CEC Message could not be received, as no connection is available.");
        return false;
    }
    kLog.Put(4, "CEC Message received from LPM");
    return true;
}

}  // namespace TrellanService
