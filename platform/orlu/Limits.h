// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>
#include <cstdint>

/// The limits of all readers of bytes from outside, each with its reason. What is over a limit is
/// refused with a log line, before memory is taken for it.
namespace Orlu::Limits {

/// One IPC frame after its length word. The largest lawful message, a code set of 1199 bytes in
/// two envelopes, needs 2 KiB; a megabyte leaves space for what a product may add.
inline constexpr std::size_t kFrameBytes = std::size_t{1024} * 1024;

/// Bytes waiting to be sent on one socket. A peer that is this far behind has stopped reading.
inline constexpr std::size_t kSendQueueBytes = std::size_t{4} * 1024 * 1024;

/// Requests of one router that wait for their reply; more means that the peer never answers.
inline constexpr std::size_t kPendingRequests = 1024;

/// Bytes that one read takes from a socket. This bounds the work that one socket can queue at a
/// time.
inline constexpr std::size_t kReadBytes = std::size_t{64} * 1024;

/// Connections that one listener serves at a time; the product has fewer than ten local peers.
inline constexpr std::size_t kConnections = 64;

/// A file that is read whole. The store of 256 code sets with 255 keys each is below 400 KiB.
inline constexpr std::size_t kFileBytes = std::size_t{1024} * 1024;

/// A text field of a message, name of a brand or a code set for example.
inline constexpr std::size_t kStringBytes = std::size_t{64} * 1024;

/// Nesting of a JSON text. The deepest message of the schemas has 4 levels.
inline constexpr int kJsonDepth = 32;

/// The body of an HTTP request on the local API.
inline constexpr std::size_t kBodyBytes = std::size_t{64} * 1024;

/// The path of a resource, or a name; the longest of the product has 33 letters.
inline constexpr std::size_t kPathBytes = 256;

/// The head of an HTTP request: browsers send about 1 KiB.
inline constexpr std::size_t kHeadBytes = std::size_t{16} * 1024;

/// Registrations of one link to the local API, and paths in one message; the service has ten.
inline constexpr std::size_t kLinkPaths = 256;

/// Files that are published at a time and the size of each, as they are held in memory. A list of
/// all brands of one device type is below 200 KiB.
inline constexpr std::size_t kPublishedFiles = 64;
inline constexpr std::size_t kPublishedBytes = std::size_t{4} * 1024 * 1024;

/// Events that wait for one consumer to read them; the product has a few of 100 bytes an hour.
inline constexpr std::size_t kEventQueueBytes = std::size_t{256} * 1024;

/// Paths that the local API remembers of services whose link has ended.
inline constexpr std::size_t kKnownPaths = 1024;

/// The text of an answer to a console; a longer one is cut. It fits a frame with its envelope.
inline constexpr std::size_t kConsoleAnswerBytes = kFrameBytes - std::size_t{4} * 1024;

/// One line typed at the console, and the words in it.
inline constexpr std::size_t kConsoleLineBytes = std::size_t{4} * 1024;
inline constexpr std::size_t kConsoleWords = 16;

}  // namespace Orlu::Limits
