// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "ProtoBufs/Trellan_Service.pb.h"
#include "blaster/LpmClientIF.h"
#include "blaster/UEIResponsesIF.h"
#include "orlu/Callback.h"
#include "orlu/Timer.h"

namespace TrellanService {

/// The only sender of blaster frames in the service: builds the frames and keeps each caller's
/// callback until its answer comes. On the server task.
///
/// A blaster's reply goes to the caller unchanged, as raw bytes in a string. A function that
/// returns a bool returns true if the frame was handed to the client; that does not mean that it
/// was sent. Answers to loads and key maps do not name their request: they are matched by order
/// alone.
class Trellan_ServiceBlasterProxy {
public:
    using StringCallback = AsyncCallback<std::string>;
    using OSMCallback = Callback<TrellanServiceMessages::OSMControlResp_t>;
    using DirectEntryCallback = Callback<TrellanServiceMessages::DirectEntryResp_t>;
    using SourceListCallback = Callback<LpmServiceMessages::BulkTransferResponse>;

    /// The instance; `task` counts at the first call only, later ones may pass null.
    static Trellan_ServiceBlasterProxy& getInstance(NotifyTargetTaskIF* task);

    /// What `getInstance` logs at its start.
    static void LogGetInstance();

    /// Works before the LPM service has answered. `responses` must outlive the proxy.
    Trellan_ServiceBlasterProxy(NotifyTargetTaskIF* task, UEIResponsesIF& responses);
    Trellan_ServiceBlasterProxy(const Trellan_ServiceBlasterProxy&) = delete;
    Trellan_ServiceBlasterProxy& operator=(const Trellan_ServiceBlasterProxy&) = delete;

    void Initialize();

    /// `callback` gets the blaster's reply to this frame.
    void SendToLPM(const LpmServiceMessages::TRS_BlasterMsg_t& message,
                   const StringCallback& callback);

    /// With flag 0 `callback` gets 01 00 at once, otherwise the blaster's reply. False, and no
    /// call, for a name without a device number.
    bool SendBlasterKey(const std::string& codeset, std::uint8_t key, std::uint8_t flag,
                        const StringCallback& callback);
    bool SendEndKey(const StringCallback& callback);

    /// Writes what was sent up to now to the socket at once, not at the end of the wake-up.
    void Flush();

    /// False for a name without a device number; `callback` then gets the name and " not valid
    /// codeset". A key map goes to the oldest query. A query that has waited for 30 s, or whose
    /// link was lost, is dropped without a call, so that it cannot take the answer of a later
    /// query.
    bool GetBlasterKeyMap(const std::string& codeset, const StringCallback& callback);
    bool DeleteCodesetFromBlaster(const std::string& codeset, const StringCallback& callback);

    bool ListBlasterCodesets(const StringCallback& callback);
    bool ResetBlaster(const StringCallback& callback);
    bool SendGetVersion(const StringCallback& callback);

    /// Begins a load. A callback that is to get its result must be queued before. False, and
    /// nothing sent, for a name without a device number; the callback then waits as for a lost
    /// result. False too for more data than a store frame can carry; the callback that was queued
    /// last is then called with a failed transfer, before this returns.
    bool StoreCodesetInBlaster(const std::string& codeset, const std::uint8_t* data,
                               std::uint32_t size);

    /// Queues a callback for the result of a load. A result goes to the front of the first queue
    /// that is not empty: guided test, direct entry, source list. An entry that no result has
    /// reached after 30 s, or when a lost link to the LPM service is back, is called with a failed
    /// transfer, so that it cannot take the result of a later load.
    void QueueCallback(const OSMCallback& callback);
    void QueueCallback(const DirectEntryCallback& callback);
    void QueueCallback(const SourceListCallback& callback);

    /// `callback` gets "CEC key sent" at once.
    bool SendCecKeyPress(std::uint32_t key, const StringCallback& callback);
    bool SendCecKeyRelease(const StringCallback& callback);

private:
    void AttachForEvents();
    bool SendFrame(std::string frame, const StringCallback& callback);
    void SendCecKey(std::uint32_t value, std::uint32_t state, const StringCallback& callback);

    void QueueKeyMap(const StringCallback& callback);
    void BeginBulkTransfer(const std::string& frame, std::uint32_t size);
    void BulkTransferComplete(const LpmServiceMessages::BulkTransferResponse& response);
    void BulkTransferFailed(const LpmServiceMessages::BulkTransferResponse& response);
    void UeiBulkTransferCompleteCb(const LpmServiceMessages::TRS_BlasterMsg_t& message);
    void UeiBulkRXTransferCompleteCb(const LpmServiceMessages::BulkTransferData& message);
    void CallbackFromQueue(const TrellanServiceMessages::DirectEntryResp_t& response);
    void CallbackFromQueue(const LpmServiceMessages::BulkTransferResponse& response);

    /// A callback that waits for the result of a load, or for a key map.
    template <class C>
    struct Waiting {
        C callback;
        std::uint64_t queuedAtMs;
        std::uint64_t number;  ///< Grows with each entry, over all queues.
    };
    template <class C>
    using WaitingQueue = std::vector<Waiting<C>>;

    template <class C>
    void Enqueue(WaitingQueue<C>& queue, const C& callback);
    template <class C, class Response>
    void CallEntry(WaitingQueue<C>& queue, std::size_t index, const Response& response);
    void FailLoad(WaitingQueue<OSMCallback>& queue, std::size_t index);
    void FailLoad(WaitingQueue<DirectEntryCallback>& queue, std::size_t index);
    void FailLoad(WaitingQueue<SourceListCallback>& queue, std::size_t index);
    bool RefuseLoad();
    void ExpireWaiting();
    void GiveUpLost();
    template <class IsLost>
    void GiveUp(IsLost isLost);
    void ArmExpiry();

    std::shared_ptr<LpmClientIF> m_client;
    bool m_hasBeenLinked = false;

public:
    /// The server task, to which other classes bind their callbacks.
    NotifyTargetTaskIF* m_task;

private:
    WaitingQueue<OSMCallback> m_osmQueue;
    WaitingQueue<DirectEntryCallback> m_directEntryQueue;
    WaitingQueue<SourceListCallback> m_sourceListQueue;
    std::uint64_t m_loads = 0;
    std::shared_ptr<APTimer> m_expiryTimer;
    WaitingQueue<StringCallback> m_keyMapQueue;
    UEIResponsesIF& m_responses;
};

}  // namespace TrellanService
