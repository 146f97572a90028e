// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <string>

#include "benchmarks/Stream.h"

namespace Bench {

/// A free port of this machine.
std::uint16_t FreePort();

/// A consumer that sends one request after the other on one connection.
class HttpReader {
public:
    /// Connects to a port of this machine; tries for ten seconds. Throws `std::runtime_error`.
    explicit HttpReader(std::uint16_t port);

    /// Sends GET. Returns the body of a 200 answer, else nothing. Throws if the connection ends.
    std::string Get(const std::string& path);

private:
    bool Read(std::string& text);

    Descriptor m_socket;
    std::string m_host;
};

}  // namespace Bench
