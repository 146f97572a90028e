// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "ProtoBufs/Trellan_Service.pb.h"
#include "benchmarks/LpmSink.h"
#include "benchmarks/Stream.h"

namespace Bench {

/// The part of the product controller that keys need. Throws `std::runtime_error` if a peer does
/// not answer within some seconds.
class KeyClient {
public:
    /// The time of one key to LpmService, and to its answer.
    struct Times {
        Clock::duration toFrame;
        Clock::duration toAnswer;
    };

    /// Connects to "TrellanService" under `root`, and tries again until there is a listener.
    explicit KeyClient(const std::string& root);

    /// Sends T2051 as the source list.
    void SendSourceList();

    /// Sends keys until one of them arrives at `sink` and is answered.
    void Warm(const LpmSink& sink);

    /// Sends one key and waits for its answer.
    Times SendKey(const LpmSink& sink);

    /// Sends `count` keys, at most `window` of them unanswered. Returns the time for all of them.
    Clock::duration SendKeys(std::size_t count, std::size_t window);

    /// Asks for the state of the cloud and waits for the answer.
    void AskCloudState();

private:
    void PutKey();
    bool WaitForReply(std::uint32_t token);
    std::size_t TakeReplies();

    Stream m_stream;
    TrellanServiceMessages::OrluKeyReqMessage_t m_key;
    IPCMessageEnvelope m_out;
    IPCMessageEnvelope m_in;
    std::uint32_t m_lastToken = 0;
};

/// Tries to connect without a pause until there is a listener.
Descriptor ConnectAsSoonAsPossible(const std::string& path);

}  // namespace Bench
