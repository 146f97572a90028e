// SPDX-License-Identifier: Apache-2.0

#include "orlu/IPCFrames.h"

#include <google/protobuf/io/coded_stream.h>
#include <google/protobuf/message.h>
#include <google/protobuf/wire_format_lite.h>

#include "orlu/Limits.h"
#include "orlu/Network.h"

namespace IPCFrames {

namespace {

using Orlu::Limits::kFrameBytes;

void PutSize(std::uint8_t* to, std::size_t size)
{
    for (int shift = 24; shift >= 0; shift -= 8) {
        *to++ = static_cast<std::uint8_t>(size >> shift);
    }
}

std::size_t GetSize(std::span<const std::uint8_t> header)
{
    std::size_t size = 0;
    for (const auto byte : header.first(kHeaderBytes)) {
        size = size << 8 | byte;
    }
    return size;
}

std::span<const std::uint8_t> BytesOf(const std::string& text)
{
    return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

using google::protobuf::internal::WireFormatLite;

std::size_t SizeOf(int field, std::uint32_t value)
{
    return WireFormatLite::TagSize(field, WireFormatLite::TYPE_UINT32) +
           WireFormatLite::UInt32Size(value);
}

/// The size of a field that holds so many bytes.
std::size_t SizeOfBytes(int field, std::size_t size)
{
    return WireFormatLite::TagSize(field, WireFormatLite::TYPE_BYTES) +
           WireFormatLite::LengthDelimitedSize(size);
}

std::uint8_t* PutBytesHead(int field, std::size_t size, std::uint8_t* to)
{
    to = WireFormatLite::WriteTagToArray(field, WireFormatLite::WIRETYPE_LENGTH_DELIMITED, to);
    return google::protobuf::io::CodedOutputStream::WriteVarint32ToArray(
        static_cast<std::uint32_t>(size), to);
}

/// Writes the fields before the payload in the order of their numbers, as protobuf does.
std::uint8_t* PutHead(const Head& head, const std::string& type, std::uint8_t* to)
{
    using Envelope = IPCMessageEnvelope;
    to = WireFormatLite::WriteUInt32ToArray(Envelope::kIdFieldNumber, head.id, to);
    if (head.token != 0) {
        to = WireFormatLite::WriteUInt32ToArray(Envelope::kTokenFieldNumber, head.token, to);
    }
    to = WireFormatLite::WriteUInt32ToArray(Envelope::kKindFieldNumber, head.kind, to);
    to = PutBytesHead(Envelope::kPayloadTypeFieldNumber, type.size(), to);
    return google::protobuf::io::CodedOutputStream::WriteStringToArray(type, to);
}

std::size_t SizeOf(const Head& head, const std::string& type)
{
    using Envelope = IPCMessageEnvelope;
    return SizeOf(Envelope::kIdFieldNumber, head.id) +
           (head.token != 0 ? SizeOf(Envelope::kTokenFieldNumber, head.token) : 0) +
           SizeOf(Envelope::kKindFieldNumber, head.kind) +
           SizeOfBytes(Envelope::kPayloadTypeFieldNumber, type.size());
}

}  // namespace

bool Write(const IPCMessageEnvelope& envelope, Network::ConnectorSocket& socket)
{
    const auto size = envelope.ByteSizeLong();
    auto* const to = size > kFrameBytes ? nullptr : socket.Extend(kHeaderBytes + size);
    if (to == nullptr) {
        return false;
    }
    PutSize(to, size);
    envelope.SerializeWithCachedSizesToArray(to + kHeaderBytes);
    return true;
}

bool Write(const Head& head, const google::protobuf::Message& message,
           Network::ConnectorSocket& socket)
{
    const std::string& type = message.GetDescriptor()->name();
    const auto payload = message.ByteSizeLong();
    const auto size =
        SizeOf(head, type) + SizeOfBytes(IPCMessageEnvelope::kPayloadFieldNumber, payload);
    // The payload's own size is checked first: the sum could wrap for a huge one.
    const bool fits = payload <= kFrameBytes && size <= kFrameBytes;
    auto* to = fits ? socket.Extend(kHeaderBytes + size) : nullptr;
    if (to == nullptr) {
        return false;
    }
    PutSize(to, size);
    to = PutHead(head, type, to + kHeaderBytes);
    to = PutBytesHead(IPCMessageEnvelope::kPayloadFieldNumber, payload, to);
    message.SerializeWithCachedSizesToArray(to);
    return true;
}

std::string Encode(const IPCMessageEnvelope& envelope)
{
    std::string frame(kHeaderBytes, '\0');
    envelope.AppendToString(&frame);
    PutSize(reinterpret_cast<std::uint8_t*>(frame.data()), frame.size() - kHeaderBytes);
    return frame;
}

void Reader::Feed(std::span<const std::uint8_t> bytes)
{
    // Without the beginning of a frame in store, frames are read where they are, without a copy.
    if (m_kept.empty()) {
        m_input = bytes;
        return;
    }
    m_kept.append(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    m_input = BytesOf(m_kept);
}

Reader::Status Reader::Next(IPCMessageEnvelope& envelope)
{
    if (m_input.size() < kHeaderBytes) {
        return KeepRest();
    }
    const auto size = GetSize(m_input);
    // Refused by its header: no memory is taken for what a peer announces.
    if (size > kFrameBytes) {
        return Status::kTooLong;
    }
    if (m_input.size() - kHeaderBytes < size) {
        return KeepRest();
    }
    const auto body = m_input.subspan(kHeaderBytes, size);
    m_input = m_input.subspan(kHeaderBytes + size);
    if (!envelope.ParseFromArray(body.data(), static_cast<int>(body.size()))) {
        return Status::kDamaged;
    }
    return envelope.kind() > kReply ? Status::kUnknownKind : Status::kFrame;
}

Reader::Status Reader::KeepRest()
{
    if (m_kept.empty()) {
        if (!m_input.empty()) {
            m_kept.assign(m_input.begin(), m_input.end());
        }
    } else {
        // `m_input` is the end of `m_kept` here; what is before it was read.
        m_kept.erase(0, m_kept.size() - m_input.size());
    }
    // One large frame must not hold its memory for the life of the connection.
    if (m_kept.empty() && m_kept.capacity() > Orlu::Limits::kReadBytes) {
        m_kept.shrink_to_fit();
    }
    m_input = {};
    return Status::kMore;
}

const char* Describe(Reader::Status status)
{
    switch (status) {
        case Reader::Status::kTooLong:
            return "a frame is too long";
        case Reader::Status::kDamaged:
            return "a frame cannot be read";
        case Reader::Status::kUnknownKind:
            return "a message is of no known kind";
        case Reader::Status::kFrame:
        case Reader::Status::kMore:
            break;
    }
    return "";
}

}  // namespace IPCFrames
