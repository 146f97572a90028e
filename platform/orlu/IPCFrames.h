// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

#include "orlu/IPCMessageEnvelope.pb.h"

namespace Network {
class ConnectorSocket;
}

namespace google::protobuf {
class Message;
}

/// A message on an IPC connection:
///
///     +--------+--------+--------+--------+---------------------+
///     | size, 4 bytes, big-endian         | IPCMessageEnvelope  |
///     +--------+--------+--------+--------+---------------------+
///
/// `size` counts what follows it and is at most `Limits::kFrameBytes`.
namespace IPCFrames {

inline constexpr std::size_t kHeaderBytes = 4;

enum Kind : std::uint32_t { kEvent = 0, kRequest = 1, kReply = 2 };

/// Appends a frame to the socket's send queue. False, and nothing is sent, if the socket is closed
/// or the frame would be too long.
bool Write(const IPCMessageEnvelope& envelope, Network::ConnectorSocket& socket);

/// The fields of an envelope other than its payload.
struct Head {
    std::uint32_t id;
    std::uint32_t kind;
    std::uint32_t token;  // 0: none
};

/// Writes the frame of an envelope with `message`, without building the envelope.
bool Write(const Head& head, const google::protobuf::Message& message,
           Network::ConnectorSocket& socket);

/// The frame as text.
std::string Encode(const IPCMessageEnvelope& envelope);

/// Reads frames from a byte stream that arrives in pieces of any size.
class Reader {
public:
    enum class Status {
        kFrame,        // one more frame was read
        kMore,         // the rest is the beginning of a frame; it is kept
        kTooLong,      // a size above the limit: nothing after it can be read
        kDamaged,      // no envelope
        kUnknownKind,  // neither event nor request nor reply
    };

    /// Takes the next piece. Frames are read in place: `bytes` must stay valid until `Next` returns
    /// anything but `kFrame`.
    void Feed(std::span<const std::uint8_t> bytes);

    /// Fills `envelope` with the next frame.
    Status Next(IPCMessageEnvelope& envelope);

private:
    Status KeepRest();

    std::string m_kept;
    std::span<const std::uint8_t> m_input;
};

/// For logs.
const char* Describe(Reader::Status status);

}  // namespace IPCFrames
