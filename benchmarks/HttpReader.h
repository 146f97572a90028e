// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <string>

#include "benchmarks/Stream.h"

namespace Bench {

/// A port of this machine on which nobody listens.
std::uint16_t FreePort();

/// A consumer that keeps its connection and asks for one thing after the other.
class HttpReader {
public:
    /// Connects to a port of this machine; tries for ten seconds. Throws `std::runtime_error`.
    explicit HttpReader(std::uint16_t port);

    /// The body of a 200 answer to GET, else empty. Throws if the connection ends.
    std::string Get(const std::string& path);

private:
    bool Read(std::string& text);

    Descriptor m_socket;
    std::string m_host;
};

}  // namespace Bench
