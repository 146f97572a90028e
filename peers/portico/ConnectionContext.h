// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <chrono>
#include <cstdint>

namespace PorticoApi {

class EventStreams;
class PublishedFiles;
class Resources;
class WebFolder;

/// How long the other side may take.
struct Timeouts {
    std::chrono::milliseconds request{30'000};  ///< from the first wait for it to its last byte
    std::chrono::milliseconds answer{120'000};  ///< of a service
    std::chrono::milliseconds farewell{2'000};  ///< until a consumer has read the last answer
};

/// What a connection has to do with. Outlives them all.
struct ConnectionContext {
    Resources& resources;
    EventStreams& events;
    PublishedFiles& files;
    const WebFolder& web;
    Timeouts timeouts;
    std::uint16_t port = 0;
};

}  // namespace PorticoApi
