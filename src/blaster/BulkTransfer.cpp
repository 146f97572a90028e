// SPDX-License-Identifier: Apache-2.0

#include "blaster/BlasterFrames.h"
#include "blaster/Trellan_ServiceBlasterProxy.h"
#include "orlu/DPrint.h"
#include "orlu/MonotonicClock.h"

using namespace LpmServiceMessages;
using namespace TrellanServiceMessages;

namespace TrellanService {

namespace {

constexpr DPrint kLog("TrellanServiceKeyHandler");

constexpr std::uint64_t kAnswerTimeoutMs = 30000;

constexpr const char* kContinue = "LAST_RESULT_CONTINUE";
constexpr const char* kError = "LAST_RESULT_ERROR";
constexpr const char* kSuccess = "LAST_RESULT_SUCCESS";

}  // namespace

template <class C>
void Trellan_ServiceBlasterProxy::Enqueue(WaitingQueue<C>& queue, const C& callback)
{
    queue.push_back({callback, MonotonicClock::NowMs(), ++m_loads});
    ArmExpiry();
}

/// The entry leaves its queue before it is called, because the call may queue the next load.
template <class C, class Response>
void Trellan_ServiceBlasterProxy::CallEntry(WaitingQueue<C>& queue, std::size_t index,
                                            const Response& response)
{
    const auto entry = queue.begin() + static_cast<std::ptrdiff_t>(index);
    const C callback = std::move(entry->callback);
    queue.erase(entry);
    ArmExpiry();
    if (callback) {
        callback(response);
    }
}

void Trellan_ServiceBlasterProxy::QueueCallback(const OSMCallback& callback)
{
    Enqueue(m_osmQueue, callback);
}

void Trellan_ServiceBlasterProxy::QueueCallback(const DirectEntryCallback& callback)
{
    kLog.Put(3, "UEI - queueing callback for direct entry");
    Enqueue(m_directEntryQueue, callback);
}

void Trellan_ServiceBlasterProxy::QueueCallback(const SourceListCallback& callback)
{
    kLog.Put(3, "UEI - queueing callback for source list load");
    Enqueue(m_sourceListQueue, callback);
}

void Trellan_ServiceBlasterProxy::QueueKeyMap(const StringCallback& callback)
{
    Enqueue(m_keyMapQueue, callback);
}

void Trellan_ServiceBlasterProxy::CallbackFromQueue(const DirectEntryResp_t& response)
{
    if (m_directEntryQueue.empty()) {
        return;
    }
    kLog.Put(3, "UEI - callback from direct entry");
    CallEntry(m_directEntryQueue, 0, response);
}

void Trellan_ServiceBlasterProxy::CallbackFromQueue(const BulkTransferResponse& response)
{
    if (!m_sourceListQueue.empty()) {
        CallEntry(m_sourceListQueue, 0, response);
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
    // The LPM has the bytes, but the blaster may still refuse them: the entry waits for id 83.
    if (response.result() == BULK_TRANSFER_SUCCESS) {
        kLog.Put(4, "Bulk transfer successful, wait for blaster message");
        return;
    }
    kLog.Put(3, "Bulk transfer failed.");
    BulkTransferFailed(response);
}

void Trellan_ServiceBlasterProxy::BulkTransferFailed(const BulkTransferResponse& response)
{
    // A result names no request. The order of the queues decides, the same order as for the
    // blaster's own result.
    if (!m_osmQueue.empty()) {
        FailLoad(m_osmQueue, 0);
    } else if (!m_directEntryQueue.empty()) {
        FailLoad(m_directEntryQueue, 0);
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
    // must not stop the sync before the code sets behind it.
    BulkTransferResponse sourceListResponse;
    sourceListResponse.set_result(BULK_TRANSFER_SUCCESS);

    const std::uint8_t status = BlasterFrames::Status(message.blaster_msg());
    kLog.Log(3, "Bulk transfer complete status = {:x}", status & 0x0F);
    // The three low bits say whether the load failed; each failure of the blaster sets one of them.
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
        CallEntry(m_osmQueue, 0, osmResponse);
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
        // The oldest query is the one that is answered: key maps come in the order of the queries.
        CallEntry(m_keyMapQueue, 0, message.data());
    }
    kLog.Put(4, "GetKeyMap bulk transfer from LPM complete");
}

void Trellan_ServiceBlasterProxy::FailLoad(WaitingQueue<OSMCallback>& queue, std::size_t index)
{
    OSMControlResp_t response;
    response.set_lastresult(kError);
    CallEntry(queue, index, response);
}

void Trellan_ServiceBlasterProxy::FailLoad(WaitingQueue<DirectEntryCallback>& queue,
                                           std::size_t index)
{
    DirectEntryResp_t response;
    m_responses.FillDirectEntryResp(response);
    response.set_lastresult(kError);
    kLog.Put(3, "UEI - callback from direct entry");
    CallEntry(queue, index, response);
}

void Trellan_ServiceBlasterProxy::FailLoad(WaitingQueue<SourceListCallback>& queue,
                                           std::size_t index)
{
    BulkTransferResponse response;
    response.set_result(BULK_TRANSFER_ERROR);
    CallEntry(queue, index, response);
}

bool Trellan_ServiceBlasterProxy::RefuseLoad()
{
    // The caller queued its callback just before. Only an entry with the last number is that one;
    // an older entry belongs to a load that is under way.
    const auto failLast = [this](auto& queue) {
        if (!queue.empty() && queue.back().number == m_loads) {
            FailLoad(queue, queue.size() - 1);
            return true;
        }
        return false;
    };
    if (!failLast(m_osmQueue) && !failLast(m_directEntryQueue)) {
        failLast(m_sourceListQueue);
    }
    return false;
}

void Trellan_ServiceBlasterProxy::ExpireWaiting()
{
    // `now` is taken once. An entry that a callback queues meanwhile, perhaps after a long
    // download, is younger and stays.
    GiveUp([now = MonotonicClock::NowMs()](const auto& entry) {
        return entry.queuedAtMs + kAnswerTimeoutMs <= now;
    });
}

/// After a new link: the answers to what was sent by the link before it are lost.
void Trellan_ServiceBlasterProxy::GiveUpLost()
{
    // `last` is taken once, so that a load which a callback begins on the new link is not given up
    // too.
    GiveUp([last = m_loads](const auto& entry) { return entry.number <= last; });
}

template <class IsLost>
void Trellan_ServiceBlasterProxy::GiveUp(IsLost isLost)
{
    const auto giveUp = [this, &isLost](auto& queue) {
        // Entries are in the order of their age, so the first that is not lost ends the loop.
        while (!queue.empty() && isLost(queue.front())) {
            kLog.Put(2, "No answer to a bulk transfer, giving it up");
            FailLoad(queue, 0);
        }
    };
    giveUp(m_osmQueue);
    giveUp(m_directEntryQueue);
    giveUp(m_sourceListQueue);
    while (!m_keyMapQueue.empty() && isLost(m_keyMapQueue.front())) {
        kLog.Put(2, "No answer to a key map query, giving it up");
        // Dropped without a call: a sync that misses an answer ends there, and a command fails when
        // its callback is dropped.
        m_keyMapQueue.erase(m_keyMapQueue.begin());
    }
    ArmExpiry();
}

void Trellan_ServiceBlasterProxy::ArmExpiry()
{
    std::uint64_t oldest = UINT64_MAX;
    const auto look = [&oldest](const auto& queue) {
        if (!queue.empty()) {
            oldest = std::min(oldest, queue.front().queuedAtMs);
        }
    };
    look(m_osmQueue);
    look(m_directEntryQueue);
    look(m_sourceListQueue);
    look(m_keyMapQueue);
    // Stopped first, so that the time-out counts from now, not from the tick that may be running.
    m_expiryTimer->Stop();
    if (oldest == UINT64_MAX) {
        return;
    }
    const std::uint64_t waited = MonotonicClock::NowMs() - oldest;
    // 1 ms for an entry that is overdue already: it is given up by the timer, not within this call.
    const std::uint64_t left = waited < kAnswerTimeoutMs ? kAnswerTimeoutMs - waited : 1;
    m_expiryTimer->SetTimeouts(static_cast<std::uint32_t>(left), 0);
    m_expiryTimer->Start([this] { ExpireWaiting(); });
}

}  // namespace TrellanService
