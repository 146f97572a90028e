// SPDX-License-Identifier: Apache-2.0

#include <fmt/format.h>
#include <gtest/gtest.h>

#include "orlu/IPCFrames.h"
#include "orlu/Limits.h"

using IPCFrames::Reader;

namespace {

/// Payload of the largest envelope as `Envelope` makes it.
constexpr std::size_t kLargest = Orlu::Limits::kFrameBytes - 20;

IPCMessageEnvelope Envelope(std::uint32_t id, std::uint32_t kind, const std::string& payload)
{
    IPCMessageEnvelope envelope;
    envelope.set_id(id);
    envelope.set_token(4711);
    envelope.set_kind(kind);
    envelope.set_payload_type("Thing_t");
    envelope.set_payload(payload);
    return envelope;
}

/// Three frames, one of them empty, and the beginning of a fourth.
std::string Stream()
{
    return IPCFrames::Encode(Envelope(80, IPCFrames::kRequest, std::string("\0\n\xff", 3))) +
           std::string(4, '\0') + IPCFrames::Encode(Envelope(83, IPCFrames::kReply, "event")) +
           std::string("\0\0\0\x09half", 8);
}

/// "<id>:<bytes> " for each message that is read from pieces of so many bytes, "!" if it fails.
std::string ReadIn(std::size_t piece, const std::string& stream)
{
    Reader reader;
    std::string read;
    for (std::size_t at = 0; at < stream.size() && !read.ends_with('!'); at += piece) {
        // The memory has exactly the size of the piece, so a sanitizer finds a read past its end.
        const std::string part = stream.substr(at, piece);
        const std::vector<std::uint8_t> exact(part.begin(), part.end());
        reader.Feed(exact);
        IPCMessageEnvelope envelope;
        Reader::Status status{};
        while ((status = reader.Next(envelope)) == Reader::Status::kFrame) {
            read += fmt::format("{}:{} ", envelope.id(), envelope.payload().size());
        }
        read += status == Reader::Status::kMore ? "" : "!";
    }
    return read;
}

TEST(FramesTest, StreamsMayBeCutAnywhere)
{
    const auto stream = Stream();
    for (std::size_t piece = 1; piece <= stream.size(); ++piece) {
        EXPECT_EQ(ReadIn(piece, stream), "80:3 0:0 83:5 ") << piece;
    }
    const auto largest = Envelope(7, IPCFrames::kEvent, std::string(kLargest, 'x'));
    ASSERT_EQ(largest.ByteSizeLong(), Orlu::Limits::kFrameBytes);
    EXPECT_EQ(ReadIn(Orlu::Limits::kReadBytes, IPCFrames::Encode(largest)),
              fmt::format("7:{} ", kLargest));
}

TEST(FramesTest, ADamagedByteIsReadOrRefusedAndNeverTooMuch)
{
    std::size_t refused = 0;
    for (std::size_t at = 0; at < Stream().size(); ++at) {
        for (int value = 0; value < 256; ++value) {
            auto bad = Stream();
            bad[at] = static_cast<char>(value);
            refused += ReadIn(bad.size(), bad).ends_with('!') ? 1U : 0U;
        }
    }
    EXPECT_GT(refused, 1000U);
}

}  // namespace
