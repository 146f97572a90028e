// SPDX-License-Identifier: Apache-2.0

#include <gtest/gtest.h>

#include "orlu/IPCFrames.h"
#include "orlu/Limits.h"
#include "orlu/Network.h"

using IPCFrames::Reader;

namespace {

std::span<const std::uint8_t> Bytes(const std::string& text)
{
    return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

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

struct Reading {
    std::string ids;
    Reader::Status end = Reader::Status::kMore;
};

void Feed(Reader& reader, std::span<const std::uint8_t> bytes, Reading& reading)
{
    IPCMessageEnvelope envelope;
    reader.Feed(bytes);
    while ((reading.end = reader.Next(envelope)) == Reader::Status::kFrame) {
        reading.ids +=
            std::to_string(envelope.id()) + ":" + std::to_string(envelope.payload().size()) + " ";
    }
}

/// Keeps what is written to it.
class KeepingSocket final : public Network::ConnectorSocket {
public:
    Network::AddrInfo GetPeer() const override { return Network::AddrInfo("nobody"); }
    void Receive(OnBytes, OnClosed) override {}
    std::uint8_t* Extend(std::size_t size) override
    {
        written.assign(size, '?');
        return reinterpret_cast<std::uint8_t*>(written.data());
    }
    void Flush() override {}
    void Close() override {}
    void NotifyGone(Orlu::Work) override {}

    std::string written;
};

TEST(FramesTest, MessagesAreWrittenAsTheirEnvelopesAre)
{
    KeepingSocket socket;
    for (const auto& head :
         {IPCFrames::Head{0, IPCFrames::kEvent, 0}, IPCFrames::Head{80, IPCFrames::kRequest, 1},
          IPCFrames::Head{65541, IPCFrames::kReply, 0xFFFFFFFF}}) {
        for (const std::size_t size : {0U, 3U, 200U, 70'000U}) {
            SCOPED_TRACE(std::to_string(head.id) + " " + std::to_string(size));
            const auto message = Envelope(7, IPCFrames::kEvent, std::string(size, '\0'));
            IPCMessageEnvelope envelope = Envelope(head.id, head.kind, "");
            envelope.set_token(head.token);
            if (head.token == 0) {
                envelope.clear_token();
            }
            envelope.set_payload_type("IPCMessageEnvelope");
            envelope.set_payload(message.SerializeAsString());
            ASSERT_TRUE(IPCFrames::Write(head, message, socket));
            EXPECT_EQ(socket.written, IPCFrames::Encode(envelope));
        }
    }
    const auto huge = Envelope(7, IPCFrames::kEvent, std::string(Orlu::Limits::kFrameBytes, 'x'));
    EXPECT_FALSE(IPCFrames::Write({1, IPCFrames::kEvent, 0}, huge, socket));
}

TEST(FramesTest, StreamsMayBeCutAnywhere)
{
    const auto stream = Stream();
    for (std::size_t cut = 0; cut <= stream.size(); ++cut) {
        SCOPED_TRACE(cut);
        Reader reader;
        Reading reading;
        Feed(reader, Bytes(stream).first(cut), reading);
        ASSERT_EQ(reading.end, Reader::Status::kMore);
        Feed(reader, Bytes(stream).subspan(cut), reading);
        EXPECT_EQ(reading.end, Reader::Status::kMore);
        EXPECT_EQ(reading.ids, "80:3 0:0 83:5 ");
    }
    Reader reader;
    Reading byByte;
    for (const char& byte : stream) {
        Feed(reader, Bytes(std::string(1, byte)), byByte);
    }
    EXPECT_EQ(byByte.ids, "80:3 0:0 83:5 ");
}

TEST(FramesTest, ADamagedByteIsReadOrRefusedAndNeverTooMuch)
{
    const auto good = Stream();
    std::size_t refused = 0;
    for (std::size_t at = 0; at < good.size(); ++at) {
        for (int value = 0; value < 256; ++value) {
            auto bad = good;
            bad[at] = static_cast<char>(value);
            Reader reader;
            Reading reading;
            // From memory of exactly that size, so that a read past the end is seen.
            const std::vector<std::uint8_t> exact(bad.begin(), bad.end());
            Feed(reader, exact, reading);
            refused += reading.end != Reader::Status::kMore ? 1 : 0;
        }
    }
    EXPECT_GT(refused, 1000U);
}

TEST(FramesTest, AFrameOfTheLargestSizePasses)
{
    IPCMessageEnvelope envelope;
    envelope.set_payload(std::string(Orlu::Limits::kFrameBytes - 4, 'x'));
    ASSERT_EQ(envelope.ByteSizeLong(), Orlu::Limits::kFrameBytes);
    const auto frame = IPCFrames::Encode(envelope);
    Reader reader;
    Reading reading;
    for (auto rest = Bytes(frame); !rest.empty();) {
        const auto size = std::min(rest.size(), Orlu::Limits::kReadBytes);
        Feed(reader, rest.first(size), reading);
        rest = rest.subspan(size);
    }
    EXPECT_EQ(reading.ids, "0:1048572 ");
}

}  // namespace
