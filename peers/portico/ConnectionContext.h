// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <chrono>
#include <cstdint>

namespace PorticoApi {

class EventStreams;
class PublishedFiles;
class Resources;
class WebFolder;

/// Limits for the other side.
struct Timeouts {
    std::chrono::milliseconds request{30'000};  ///< from the start of the wait to the last byte
    std::chrono::milliseconds answer{120'000};  ///< for the answer of a service
    std::chrono::milliseconds linger{2'000};    ///< from the last answer to the consumer's close
};

/// What a connection refers to. Outlives all connections.
struct ConnectionContext {
    Resources& resources;
    EventStreams& events;
    PublishedFiles& files;
    const WebFolder& web;
    Timeouts timeouts;
    std::uint16_t port = 0;
};

}  // namespace PorticoApi
