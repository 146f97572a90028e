// SPDX-License-Identifier: Apache-2.0

#include "lpm/Blaster.h"

#include <algorithm>
#include <limits>
#include <utility>

#include "orlu/DPrint.h"

namespace Lpm {

namespace {

constexpr DPrint kLog("Blaster");

/// Major and minor number of the byte protocol.
constexpr std::string_view kVersion{"\x01\x00", 2};

constexpr std::size_t kDeviceBytes = 2;
constexpr std::size_t kKeyArguments = 6;
constexpr std::uint8_t kInvalidKey = 255;
constexpr std::size_t kAnyLength = std::numeric_limits<std::size_t>::max();

/// The payload's first byte is the count.
constexpr std::size_t kMaximumListed = (kMaximumPayload - 1) / kDeviceBytes;

bool IsHold(std::uint8_t flag)
{
    return flag == static_cast<std::uint8_t>(SendFlag::kHold) ||
           flag == static_cast<std::uint8_t>(SendFlag::kHoldFirst);
}

bool IsOnce(std::uint8_t flag)
{
    return flag == static_cast<std::uint8_t>(SendFlag::kOnce);
}

}  // namespace

struct Blaster::Row {
    Command command;
    std::size_t minimum;  ///< bytes of arguments
    std::size_t maximum;
    std::string (Blaster::*execute)(const BlasterFrame&, ConnectionId);
};

const Blaster::Row Blaster::kRows[] = {
    {Command::kEndKey, 0, 0, &Blaster::EndKey},
    {Command::kKey, kKeyArguments, kKeyArguments, &Blaster::Key},
    {Command::kKeyMap, kDeviceBytes, kDeviceBytes, &Blaster::KeyMap},
    {Command::kReset, 1, 1, &Blaster::Reset},
    {Command::kVersion, 0, 0, &Blaster::Version},
    {Command::kDelete, kDeviceBytes, kDeviceBytes, &Blaster::Delete},
    {Command::kList, 0, 0, &Blaster::List},
    {Command::kStore, kDeviceBytes, kAnyLength, &Blaster::StoreFrame},
};

Blaster::Blaster(NotifyTargetTaskIF* task, Transmitter::OnChange change)
    : m_transmitter(task, std::move(change))
{
}

std::string Blaster::Execute(Bytes bytes, ConnectionId from)
{
    const auto frame = ParseFrame(bytes);
    if (!frame) {
        kLog.Log(2, "Malformed frame of {} bytes", bytes.size());
        return MakeReply(Status::kMalformedFrame);
    }
    const auto* row = std::ranges::find(kRows, static_cast<Command>(frame->command), &Row::command);
    if (row == std::end(kRows)) {
        kLog.Log(2, "Unknown command 0x{:02x}", frame->command);
        return MakeReply(Status::kUnknownCommand);
    }
    const std::size_t size = frame->arguments.size();
    if (size < row->minimum || size > row->maximum) {
        kLog.Log(2, "Command 0x{:02x} with {} bytes of arguments", frame->command, size);
        return MakeReply(Status::kMalformedFrame);
    }
    return (this->*row->execute)(*frame, from);
}

std::string Blaster::EndKey(const BlasterFrame&, ConnectionId)
{
    m_transmitter.End();
    return MakeReply(Status::kOk);
}

std::string Blaster::Key(const BlasterFrame& frame, ConnectionId from)
{
    const std::uint8_t key = frame.arguments[2];
    const std::uint8_t flag = frame.arguments[3];
    if ((!IsHold(flag) && !IsOnce(flag)) || frame.arguments[4] != 0 || frame.arguments[5] != 0) {
        return MakeReply(Status::kBadArgument);
    }
    const auto codeset = m_codesets.find(DeviceOf(frame));
    if (codeset == m_codesets.end()) {
        return MakeReply(Status::kNoSuchCodeset);
    }
    // 255 says that the service found no UEI key for the product key.
    const CodesetKey* found = key == kInvalidKey ? nullptr : codeset->second.binary->Find(key);
    if (found == nullptr) {
        return MakeReply(Status::kNoSuchKey);
    }
    // If this connection is lost, no end key can come from it: ConnectionLost ends the key.
    m_sender = from;
    // A receiver takes a frame with the same toggle as a repeat of the press before.
    const bool toggle = codeset->second.toggle;
    codeset->second.toggle = !toggle;
    m_transmitter.Press(codeset->first, codeset->second.binary, *found, toggle, IsOnce(flag));
    return MakeReply(Status::kOk);
}

std::string Blaster::KeyMap(const BlasterFrame& frame, ConnectionId)
{
    const auto codeset = m_codesets.find(DeviceOf(frame));
    if (codeset == m_codesets.end()) {
        return MakeReply(Status::kNoSuchCodeset);
    }
    // A key is one byte and a code set has at most 244 keys, so the map fits one reply.
    std::string keys;
    for (const CodesetKey& key : codeset->second.binary->Keys()) {
        keys += static_cast<char>(key.ueiKey);
    }
    return MakeReply(Status::kOk, keys);
}

std::string Blaster::Reset(const BlasterFrame& frame, ConnectionId)
{
    if (frame.arguments[0] != 1) {
        return MakeReply(Status::kBadArgument);
    }
    // Not End, which would still send the frames that the press lacks.
    m_transmitter.Abort();
    m_codesets.clear();
    return MakeReply(Status::kOk);
}

std::string Blaster::Version(const BlasterFrame&, ConnectionId)
{
    return MakeReply(Status::kOk, kVersion);
}

std::string Blaster::Delete(const BlasterFrame& frame, ConnectionId)
{
    const DeviceNumber device = DeviceOf(frame);
    AbortIfSending(device);
    return MakeReply(m_codesets.erase(device) != 0 ? Status::kOk : Status::kNoSuchCodeset);
}

std::string Blaster::List(const BlasterFrame&, ConnectionId)
{
    const std::size_t count = std::min(m_codesets.size(), kMaximumListed);
    if (count < m_codesets.size()) {
        kLog.Log(2, "Listing {} of {} code sets", count, m_codesets.size());
    }
    std::string list(1, static_cast<char>(count));
    for (auto codeset = m_codesets.begin(); list.size() < 1 + count * kDeviceBytes; ++codeset) {
        list += static_cast<char>(codeset->first >> 8);
        list += static_cast<char>(codeset->first & 0xFF);
    }
    return MakeReply(Status::kOk, list);
}

std::string Blaster::StoreFrame(const BlasterFrame& frame, ConnectionId)
{
    std::string why;
    const DeviceNumber device = DeviceOf(frame);
    const Status status = Store(device, frame.arguments.subspan(kDeviceBytes), why);
    if (status != Status::kOk) {
        kLog.Log(2, "Code set 0x{:04x} is refused: {}", device, why);
    }
    return MakeReply(status);
}

Status Blaster::Store(DeviceNumber device, Bytes data, std::string& why)
{
    auto binary = CodesetBinary::Parse(data, why);
    if (!binary) {
        return Status::kMalformedBinary;
    }
    // Replacing a code set does not raise the count, so a full blaster accepts it.
    if (!m_codesets.contains(device) && m_codesets.size() >= kMaximumCodesets) {
        why = fmt::format("{} are held already", m_codesets.size());
        return Status::kFull;
    }
    // The transmitter shares the binary: a held key would go on with the replaced code set.
    AbortIfSending(device);
    m_codesets[device] = {std::make_shared<const CodesetBinary>(std::move(*binary))};
    return Status::kOk;
}

void Blaster::ConnectionLost(ConnectionId connection)
{
    if (connection == m_sender) {
        m_transmitter.Abort();
    }
}

void Blaster::AbortIfSending(DeviceNumber device)
{
    if (m_transmitter.IsSending(device)) {
        m_transmitter.Abort();
    }
}

}  // namespace Lpm
