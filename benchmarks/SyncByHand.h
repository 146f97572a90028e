// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "benchmarks/Stream.h"

namespace Bench {

/// A sync without any logic: resets the blaster, posts for each code set and loads it, then asks
/// for the keys of each. Each step starts after the answer of the step before. Posts and frames are
/// those of the service. No store, no log.
class SyncByHand {
public:
    /// Connects to "LpmService" under `root`; the cloud is asked at its port of this machine.
    /// Throws `std::runtime_error`, here and below.
    SyncByHand(const std::string& root, std::uint16_t cloudPort);
    ~SyncByHand();
    SyncByHand(const SyncByHand&) = delete;
    SyncByHand& operator=(const SyncByHand&) = delete;

    /// Each name is that of a television's code set: "T" and a number below 4096.
    void Run(const std::vector<std::string>& names);

private:
    struct Post;

    std::string Download(const std::string& name);
    void SendFrame(std::uint32_t id, std::uint32_t kind, const std::string& frame);
    void Load(const std::string& frame);
    void WaitFor(std::uint32_t id, std::uint32_t kind);

    std::unique_ptr<Post> m_post;
    Stream m_stream;
    IPCMessageEnvelope m_out;
    IPCMessageEnvelope m_in;
    std::uint32_t m_lastToken = 0;
};

}  // namespace Bench
