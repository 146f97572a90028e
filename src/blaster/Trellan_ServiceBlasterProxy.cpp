// SPDX-License-Identifier: Apache-2.0

#include "blaster/Trellan_ServiceBlasterProxy.h"

#include <span>
#include <utility>

#include "blaster/BlasterFrames.h"
#include "codesets/Trellan_ServiceCodesetHandler.h"
#include "orlu/DPrint.h"

using namespace LpmServiceMessages;

namespace TrellanService {

namespace {

constexpr DPrint kLog("TrellanServiceKeyHandler");

TRS_BlasterMsg_t Message(std::string frame)
{
    TRS_BlasterMsg_t message;
    message.set_blaster_msg(std::move(frame));
    return message;
}

bool ToDevice(const std::string& codeset, std::uint16_t& device)
{
    return Trellan_ServiceCodesetHandler::devStringTodevNum(codeset, device);
}

bool NotValid(const std::string& codeset, const AsyncCallback<std::string>& callback)
{
    callback(codeset + " not valid codeset");
    return false;
}

}  // namespace

Trellan_ServiceBlasterProxy::Trellan_ServiceBlasterProxy(NotifyTargetTaskIF* task,
                                                         UEIResponsesIF& responses)
    : m_task(task),
      m_expiryTimer(APTimer::Create(task, "TRSBulkTransferTimer")),
      m_responses(responses)
{
    kLog.Put(4, "Trellan_ServiceBlasterProxy");
    m_client = CreateLpmClient("TRSLpmClient", task);
    m_client->Connect([this](const bool& connected) {
        kLog.Put(3, connected ? "TRS lpmClient connected" : "TRS lpmClient not connected");
        // The first link has lost no answer, and a load may have been queued before it was there.
        if (std::exchange(m_hasBeenLinked, true)) {
            GiveUpLost();
        }
    });
    // Connecting is queued work, so the handlers are in place before the first message.
    AttachForEvents();
    kLog.Log(4, "Client = {}", fmt::ptr(m_client.get()));
}

void Trellan_ServiceBlasterProxy::LogGetInstance()
{
    kLog.Put(4,
             "static TrellanService::Trellan_ServiceBlasterProxy& "
             "TrellanService::Trellan_ServiceBlasterProxy::getInstance(NotifyTargetTaskIF*)");
}

void Trellan_ServiceBlasterProxy::Initialize()
{
    kLog.Put(4, __PRETTY_FUNCTION__);
}

void Trellan_ServiceBlasterProxy::AttachForEvents()
{
    // Queued because the answer to the transfer is queued too: of two that arrive together the
    // first must stay the first.
    const AsyncCallback<TRS_BlasterMsg_t> blasterDone(
        [this](const TRS_BlasterMsg_t& message) { UeiBulkTransferCompleteCb(message); }, m_task);
    m_client->Router()->AddHandler<TRS_BlasterMsg_t>(
        IPC_BULK_BLASTER_DONE, [blasterDone](const TRS_BlasterMsg_t& message,
                                             std::uint32_t /*token*/) { blasterDone(message); });
    m_client->Router()->AddHandler<BulkTransferData>(
        BLASTER_KEY_MAP_RESP, [this](const BulkTransferData& message, std::uint32_t /*token*/) {
            UeiBulkRXTransferCompleteCb(message);
        });
}

void Trellan_ServiceBlasterProxy::SendToLPM(const TRS_BlasterMsg_t& message,
                                            const StringCallback& callback)
{
    kLog.Put(3, "Sending LPM message");
    m_client->TRS_SendToBlaster(
        message, [callback](const TRS_BlasterMsg_t& reply) { callback(reply.blaster_msg()); },
        IPC_DEVICE_LPM);
}

bool Trellan_ServiceBlasterProxy::SendFrame(std::string frame, const StringCallback& callback)
{
    SendToLPM(Message(std::move(frame)), callback);
    return true;
}

bool Trellan_ServiceBlasterProxy::SendBlasterKey(const std::string& codeset, std::uint8_t key,
                                                 std::uint8_t flag, const StringCallback& callback)
{
    std::uint16_t device = 0;
    if (!ToDevice(codeset, device)) {
        return false;
    }
    std::string frame = BlasterFrames::Key(device, key, flag);
    if (flag != 0) {
        return SendFrame(std::move(frame), callback);
    }
    // A held key does not wait for the blaster, so its caller gets a success in the shape of a
    // reply at once.
    m_client->TRS_SendKeyToBlaster(Message(std::move(frame)), IPC_DEVICE_LPM);
    callback(BlasterFrames::Success());
    return true;
}

bool Trellan_ServiceBlasterProxy::SendEndKey(const StringCallback& callback)
{
    kLog.Put(3, "Sending end key to LPM");
    return SendFrame(BlasterFrames::EndKey(), callback);
}

void Trellan_ServiceBlasterProxy::Flush()
{
    m_client->Router()->Flush();
}

bool Trellan_ServiceBlasterProxy::GetBlasterKeyMap(const std::string& codeset,
                                                   const StringCallback& callback)
{
    std::uint16_t device = 0;
    if (!ToDevice(codeset, device)) {
        return NotValid(codeset, callback);
    }
    m_client->TRS_SendBlasterKeyMapRqst(Message(BlasterFrames::KeyMap(device)), IPC_DEVICE_LPM);
    // No answer can overtake this: it is read on this task.
    QueueKeyMap(callback);
    return true;
}

bool Trellan_ServiceBlasterProxy::DeleteCodesetFromBlaster(const std::string& codeset,
                                                           const StringCallback& callback)
{
    std::uint16_t device = 0;
    if (!ToDevice(codeset, device)) {
        return NotValid(codeset, callback);
    }
    return SendFrame(BlasterFrames::Delete(device), callback);
}

bool Trellan_ServiceBlasterProxy::ListBlasterCodesets(const StringCallback& callback)
{
    return SendFrame(BlasterFrames::List(), callback);
}

bool Trellan_ServiceBlasterProxy::ResetBlaster(const StringCallback& callback)
{
    return SendFrame(BlasterFrames::Reset(), callback);
}

bool Trellan_ServiceBlasterProxy::SendGetVersion(const StringCallback& callback)
{
    kLog.Put(3, "SENDING VERSION REQ");
    return SendFrame(BlasterFrames::Version(), callback);
}

bool Trellan_ServiceBlasterProxy::StoreCodesetInBlaster(const std::string& codeset,
                                                        const std::uint8_t* data,
                                                        std::uint32_t size)
{
    std::uint16_t device = 0;
    if (!ToDevice(codeset, device)) {
        return false;
    }
    if (size > BlasterFrames::kMaxStoreBytes) {
        kLog.Log(2, "Codeset {} of {} bytes is too large for the blaster", codeset, size);
        // The callback that was queued for this load would otherwise wait for 30 s, or take the
        // result of the next load.
        return RefuseLoad();
    }
    const std::string frame = BlasterFrames::Store(device, std::span(data, size));
    BeginBulkTransfer(frame, static_cast<std::uint32_t>(frame.size()));
    return true;
}

bool Trellan_ServiceBlasterProxy::SendCecKeyPress(std::uint32_t key, const StringCallback& callback)
{
    SendCecKey(key, 0, callback);
    return true;
}

bool Trellan_ServiceBlasterProxy::SendCecKeyRelease(const StringCallback& callback)
{
    SendCecKey(0, 1, callback);
    return true;
}

void Trellan_ServiceBlasterProxy::SendCecKey(std::uint32_t value, std::uint32_t state,
                                             const StringCallback& callback)
{
    IpcCecKey_t message;
    message.set_value(value);
    message.set_state(state);
    m_client->SendCecKey(message, IPC_DEVICE_LPM);
    // The LPM does not answer a CEC key.
    callback("CEC key sent");
}

}  // namespace TrellanService
