// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <chrono>
#include <cstdint>
#include <string_view>

namespace PorticoApi {

class EventStreams;
class PublishedFiles;
class Resources;
class WebFolder;

/// How long the other side may take.
struct Patience {
    std::chrono::milliseconds request{30'000};  ///< from the first wait for it to its last byte
    std::chrono::milliseconds answer{120'000};  ///< of a service
    std::chrono::milliseconds farewell{2'000};  ///< until a consumer has read the last answer
};

/// What a connection has to do with. Outlives them all.
struct Site {
    Resources& resources;
    EventStreams& events;
    PublishedFiles& files;
    const WebFolder& web;
    Patience patience;
    std::uint16_t port = 0;
};

/// Whether a request is meant for us: `host` is one of the loopback's names with our port.
/// Otherwise a page of elsewhere has had its own name point to this machine.
bool IsOurHost(std::string_view host, std::uint16_t port);

/// Whether a page may ask: `origin` is one of ours over plain HTTP.
bool IsOurOrigin(std::string_view origin, std::uint16_t port);

}  // namespace PorticoApi
