// SPDX-License-Identifier: Apache-2.0

#include "infrared/FrameCoder.h"

#include <numeric>

namespace Lpm {
namespace {

using Durations = std::vector<std::uint32_t>;

/// Appends a mark (`on`) or a space. Two marks or two spaces in a row become one duration, and a
/// space at the start of a frame is left out: the durations alternate and begin with a mark.
void Append(Durations& out, bool on, std::uint32_t us)
{
    const bool lastIsOn = out.size() % 2 == 1;
    if (us == 0 || (out.empty() && !on)) {
        return;
    }
    if (!out.empty() && on == lastIsOn) {
        out.back() += us;
        return;
    }
    out.push_back(us);
}

void AppendPulse(Durations& out, const Pulse& pulse)
{
    Append(out, true, pulse.markUs);
    Append(out, false, pulse.spaceUs);
}

void AppendPulses(Durations& out, const ProtocolRow& row, std::uint64_t payload)
{
    for (unsigned bit = 0; bit < row.bits; ++bit) {
        AppendPulse(out, (payload >> bit & 1) != 0 ? row.one : row.zero);
    }
    Append(out, true, row.trailerUs);
}

void AppendManchester(Durations& out, const ProtocolRow& row, std::uint64_t payload)
{
    // The highest bit first, unlike the pulse protocols.
    for (unsigned bit = 0; bit < row.bits; ++bit) {
        const bool one = (payload >> (row.bits - 1 - bit) & 1) != 0;
        const bool startsWithMark = one == row.oneStartsWithMark;
        const std::uint32_t half = row.doubleBit == bit ? 2 * row.halfBitUs : row.halfBitUs;
        Append(out, startsWithMark, half);
        Append(out, !startsWithMark, half);
    }
}

void AppendBody(Durations& out, const ProtocolRow& row, std::uint64_t payload)
{
    if (row.coding == Coding::kManchester) {
        AppendManchester(out, row, payload);
        return;
    }
    AppendPulses(out, row, payload);
    // Sharp: the receiver checks a code by a second one with these bits inverted.
    if (row.echoFlips != 0) {
        Append(out, false, row.gapUs);
        AppendPulses(out, row, payload ^ row.echoFlips);
    }
}

void AppendGap(Durations& out, const ProtocolRow& row, FramePhase phase)
{
    // A period is start to start, so the last space depends on the length of the code.
    const bool ownPeriod = phase == FramePhase::kRepeat && row.repeatPeriodUs != 0;
    const std::uint32_t period = ownPeriod ? row.repeatPeriodUs : row.periodUs;
    const std::uint32_t sent = std::accumulate(out.begin(), out.end(), std::uint32_t{0});
    Append(out, false, period > sent ? period - sent : row.gapUs);
}

}  // namespace

void EncodeFrame(const ProtocolRow& row, std::uint32_t scancode, bool toggle, FramePhase phase,
                 std::vector<std::uint32_t>& durationsUs)
{
    durationsUs.clear();
    const bool repeat = phase == FramePhase::kRepeat;
    if (repeat && row.repeat == Repeat::kDitto) {
        AppendPulse(durationsUs, row.ditto);
        Append(durationsUs, true, row.trailerUs);
    } else {
        if (!repeat || row.repeat != Repeat::kHeaderless) {
            AppendPulse(durationsUs, row.header);
        }
        AppendBody(durationsUs, row, row.payload(scancode, toggle));
    }
    AppendGap(durationsUs, row, phase);
}

}  // namespace Lpm
