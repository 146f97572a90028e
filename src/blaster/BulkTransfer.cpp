// SPDX-License-Identifier: Apache-2.0

#include "blaster/BlasterFrames.h"
#include "blaster/Trellan_ServiceBlasterProxy.h"
#include "orlu/DPrint.h"

using namespace LpmServiceMessages;
using namespace TrellanServiceMessages;

namespace TrellanService {

namespace {

constexpr DPrint kLog("TrellanServiceKeyHandler");

constexpr const char* kContinue = "LAST_RESULT_CONTINUE";
constexpr const char* kError = "LAST_RESULT_ERROR";
constexpr const char* kSuccess = "LAST_RESULT_SUCCESS";

/// The entry leaves its queue before it is called, for the call may queue the next one.
template <class Queue, class Response>
void CallFront(Queue& queue, const Response& response)
{
    const auto callback = std::move(queue.front());
    queue.erase(queue.begin());
    if (callback) {
        callback(response);
    }
}

}  // namespace

void Trellan_ServiceBlasterProxy::QueueCallback(const OSMCallback& callback)
{
    m_osmQueue.push_back(callback);
}

void Trellan_ServiceBlasterProxy::QueueCallback(const DirectEntryCallback& callback)
{
    kLog.Put(3, "UEI - queueing callback for direct entry");
    m_directEntryQueue.push_back(callback);
}

void Trellan_ServiceBlasterProxy::QueueCallback(const SourceListCallback& callback)
{
    kLog.Put(3, "UEI - queueing callback for source list load");
    m_sourceListQueue.push_back(callback);
}

void Trellan_ServiceBlasterProxy::CallbackFromQueue(const DirectEntryResp_t& response)
{
    if (m_directEntryQueue.empty()) {
        return;
    }
    kLog.Put(3, "UEI - callback from direct entry");
    CallFront(m_directEntryQueue, response);
}

void Trellan_ServiceBlasterProxy::CallbackFromQueue(const BulkTransferResponse& response)
{
    if (!m_sourceListQueue.empty()) {
        CallFront(m_sourceListQueue, response);
    }
}

void Trellan_ServiceBlasterProxy::BeginBulkTransfer(const std::string& frame, std::uint32_t size)
{
    BulkNotifyData_t message;
    message.set_data(frame);
    message.set_length(size);
    message.set_type(BULK_TYPE_BLASTER_RECORD);
    const AsyncCallback<BulkTransferResponse> complete(
        [this](const BulkTransferResponse& response) { BulkTransferComplete(response); }, m_task);
    kLog.Put(3, "Starting bulk transfer of codeset");
    m_client->SendBulkData(message, Callback<BulkTransferResponse>(complete), IPC_DEVICE_LPM);
}

void Trellan_ServiceBlasterProxy::BulkTransferComplete(const BulkTransferResponse& response)
{
    kLog.Log(3, "Bulk transfer complete status {}", static_cast<int>(response.result()));
    if (response.result() == BULK_TRANSFER_SUCCESS) {
        kLog.Put(4, "Bulk transfer successful, wait for blaster message");
        return;
    }
    kLog.Put(3, "Bulk transfer failed.");
    BulkTransferFailed(response);
}

void Trellan_ServiceBlasterProxy::BulkTransferFailed(const BulkTransferResponse& response)
{
    if (!m_osmQueue.empty()) {
        OSMControlResp_t osmResponse;
        osmResponse.set_lastresult(kError);
        CallFront(m_osmQueue, osmResponse);
    } else if (!m_directEntryQueue.empty()) {
        DirectEntryResp_t directEntryResponse;
        m_responses.FillDirectEntryResp(directEntryResponse);
        directEntryResponse.set_lastresult(kError);
        CallbackFromQueue(directEntryResponse);
    } else if (!m_sourceListQueue.empty()) {
        CallbackFromQueue(response);
    } else {
        kLog.Put(1, "No callback for bulk transfer response");
    }
}

void Trellan_ServiceBlasterProxy::UeiBulkTransferCompleteCb(const TRS_BlasterMsg_t& message)
{
    OSMControlResp_t osmResponse;
    m_responses.FillOSMControlResp(osmResponse);
    DirectEntryResp_t directEntryResponse;
    m_responses.FillDirectEntryResp(directEntryResponse);
    // Of a load for the source list only the transfer counts: a code set that the blaster refuses
    // does not keep the next ones out.
    BulkTransferResponse sourceListResponse;
    sourceListResponse.set_result(BULK_TRANSFER_SUCCESS);

    const std::uint8_t status = BlasterFrames::Status(message.blaster_msg());
    kLog.Log(3, "Bulk transfer complete status = {:x}", status & 0x0F);
    if ((status & 0x07) == 0) {
        kLog.Put(3, "Codeset successfully loaded in blaster");
        osmResponse.set_lastresult(kContinue);
        directEntryResponse.set_lastresult(kSuccess);
    } else {
        kLog.Log(2, "Failed to load codeset in blaster, reason code {:x}", status & 0x0F);
        osmResponse.set_lastresult(kError);
        directEntryResponse.set_lastresult(kError);
    }

    if (!m_osmQueue.empty()) {
        CallFront(m_osmQueue, osmResponse);
    } else if (!m_directEntryQueue.empty()) {
        CallbackFromQueue(directEntryResponse);
    } else if (!m_sourceListQueue.empty()) {
        CallbackFromQueue(sourceListResponse);
    } else {
        kLog.Put(1, "No callback for bulk transfer blaster result");
    }
}

void Trellan_ServiceBlasterProxy::UeiBulkRXTransferCompleteCb(const BulkTransferData& message)
{
    if (!m_keyMapQueue.empty()) {
        kLog.Put(4, "GetKeyMap callback function exists");
        CallFront(m_keyMapQueue, message.data());
    }
    kLog.Put(4, "GetKeyMap bulk transfer from LPM complete");
}

}  // namespace TrellanService
