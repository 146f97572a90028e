// SPDX-License-Identifier: Apache-2.0

#include <algorithm>
#include <cstdint>
#include <string>

#include "orlu/IPCFrames.h"

namespace {

/// The frames read from a stream that arrives in pieces of `step` bytes.
std::string ReadInPieces(std::span<const std::uint8_t> stream, std::size_t step)
{
    using Status = IPCFrames::Reader::Status;
    IPCFrames::Reader reader;
    std::string result;
    while (!stream.empty()) {
        const auto piece = stream.first(std::min(step, stream.size()));
        stream = stream.subspan(piece.size());
        reader.Feed(piece);
        IPCMessageEnvelope envelope;
        Status status = Status::kMore;
        while ((status = reader.Next(envelope)) == Status::kFrame) {
            result += IPCFrames::Encode(envelope);
        }
        if (status != Status::kMore) {
            return result + IPCFrames::Describe(status);
        }
    }
    return result;
}

}  // namespace

// A stream gives the same frames for each size of its pieces.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::span stream(data, size);
    if (size > 0 && ReadInPieces(stream, size) != ReadInPieces(stream, data[0] % 7 + 1)) {
        __builtin_trap();
    }
    return 0;
}
