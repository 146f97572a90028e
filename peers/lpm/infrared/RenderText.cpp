// SPDX-License-Identifier: Apache-2.0

#include "infrared/RenderText.h"

#include "infrared/FrameCoder.h"
#include "infrared/Protocols.h"

#include <fmt/format.h>

#include <vector>

namespace Lpm {
namespace {

std::string KnownNames()
{
    std::string names;
    for (const ProtocolRow& row : AllProtocols()) {
        if (row.coding != Coding::kStored) {
            names += fmt::format("{}{}", names.empty() ? "" : ", ", row.name);
        }
    }
    return names;
}

const ProtocolRow* ReadProtocol(std::string_view name, std::string& why)
{
    const ProtocolRow* row = FindProtocol(name);
    if (row == nullptr || row->coding == Coding::kStored) {
        why = fmt::format("unknown protocol '{}'; known are {}", name, KnownNames());
        return nullptr;
    }
    return row;
}

std::string Render(const ProtocolRow& row, std::uint32_t scancode, bool toggle, unsigned repeats)
{
    std::string text = fmt::format("carrier {}\n", row.carrierHz);
    std::vector<std::uint32_t> durations;
    for (unsigned frame = 0; frame < row.minimumFrames + repeats; ++frame) {
        const bool press = frame < row.minimumFrames;
        EncodeFrame(row, scancode, toggle, press ? FramePhase::kPress : FramePhase::kRepeat,
                    durations);
        for (std::size_t i = 0; i < durations.size(); ++i) {
            text += fmt::format("{} {}\n", i % 2 == 0 ? "pulse" : "space", durations[i]);
        }
    }
    return text;
}

}  // namespace

std::optional<std::string> RenderText(std::string_view key, bool toggle, unsigned repeats,
                                      std::string& why)
{
    const std::size_t colon = key.find(':');
    if (colon == std::string_view::npos) {
        why = fmt::format("'{}' is no key; PROTOCOL:SCANCODE is, such as nec:0x0408", key);
        return std::nullopt;
    }
    const ProtocolRow* row = ReadProtocol(key.substr(0, colon), why);
    if (row == nullptr) {
        return std::nullopt;
    }
    const std::optional<std::uint32_t> scancode = ParseScancode(*row, key.substr(colon + 1), why);
    if (!scancode) {
        return std::nullopt;
    }
    if (repeats > kMaximumRenderedRepeats) {
        why = fmt::format("{} repeats are more than {}", repeats, kMaximumRenderedRepeats);
        return std::nullopt;
    }
    return Render(*row, *scancode, toggle, repeats);
}

}  // namespace Lpm
