// SPDX-License-Identifier: Apache-2.0

#include "devices/Decoder.h"

// Both change the level in the middle of each bit, the most significant first.
// RC-5: half a bit is 889; a 1 is a space, then a mark. 1, field, toggle, address 5, command 6. The
// field bit is the inverse of a seventh, highest bit of the command.
// RC-6: 2664 888, then half a bit is 444; a 1 is a mark, then a space. 1, mode 3, a bit of double
// length. In mode 0 the double bit is the toggle, and address 8, command 8 follow. In mode 6 the
// double bit is 0, and 32 bits follow, whose upper half names the customer. Media centre remotes
// have their toggle in bit 15 of these.

namespace Lpm::Devices {

namespace {

/// The level of each half bit; true is a mark.
using Halves = std::vector<bool>;

/// The number of half bits in a duration; 0 if it fits none. One half that is 60 % too long must
/// not be read as two, nor two that are 60 % too short as one: either could change the last bit.
/// Three halves occur only next to a bit of double length. The limit between two and three is the
/// duration that deviates from both by the same factor.
unsigned HalvesIn(std::uint32_t duration, std::uint32_t half)
{
    const std::uint64_t permille = duration * 1000ULL / half;
    if (permille >= 810 && permille <= 1250) {
        return 1;
    }
    if (permille >= 1620 && permille <= 2450) {
        return 2;
    }
    return permille > 2450 && permille <= 3750 ? 3 : 0;
}

std::optional<Halves> ReadHalves(std::span<const std::uint32_t> durations, std::uint32_t half)
{
    Halves halves;
    bool isOn = true;
    for (const std::uint32_t duration : durations) {
        const unsigned count = HalvesIn(duration, half);
        if (count == 0) {
            return std::nullopt;
        }
        halves.insert(halves.end(), count, isOn);
        isOn = !isOn;
    }
    return halves;
}

/// A space in the last half bit is part of the pause and was not read: adds it if it is missing.
bool Complete(Halves& halves, std::size_t expected)
{
    if (halves.size() + 1 == expected) {
        halves.push_back(false);
    }
    return halves.size() == expected;
}

/// Reads `count` bits from half `first` on. `firstLevelOfOne` is the level of the first half of a
/// 1.
std::optional<std::uint32_t> ReadBits(const Halves& halves, std::size_t first, unsigned count,
                                      bool firstLevelOfOne)
{
    std::uint32_t bits = 0;
    for (std::size_t i = first; i < first + 2 * count; i += 2) {
        if (halves[i] == halves[i + 1]) {
            return std::nullopt;
        }
        bits = bits << 1 | std::uint32_t{halves[i] == firstLevelOfOne};
    }
    return bits;
}

class Rc5Decoder : public DecoderIF {
public:
    Reading Read(const Burst& burst) override
    {
        auto halves = ReadHalves(burst.durations, 889);
        if (!halves) {
            return {};
        }
        // The first bit is a 1: its first half is a space, which comes before the burst.
        halves->insert(halves->begin(), false);
        if (!Complete(*halves, 28)) {
            return {};
        }
        const auto bits = ReadBits(*halves, 0, 14, false);
        if (!bits) {
            return {};
        }
        const std::uint32_t extension = (*bits & 0x1000) == 0 ? 0x40 : 0;
        const std::uint32_t scancode = (*bits >> 6 & 0x1f) << 8 | extension | (*bits & 0x3f);
        return ReadWholeCode(m_held, burst, Protocol::kRc5, scancode, (*bits & 0x800) != 0);
    }

private:
    HeldKey m_held;
};

struct Rc6Code {
    std::uint32_t mode;
    bool doubleBit;
    std::uint32_t body;
};

std::optional<Rc6Code> ReadRc6(const Burst& burst, unsigned bodyBits)
{
    const auto durations = burst.durations;
    if (durations.size() < 2 || !IsAbout(durations[0], 2664) || !IsAbout(durations[1], 888)) {
        return std::nullopt;
    }
    auto halves = ReadHalves(durations.subspan(2), 444);
    if (!halves || !Complete(*halves, 12 + 2 * bodyBits)) {
        return std::nullopt;
    }
    const Halves& h = *halves;
    const auto head = ReadBits(h, 0, 4, true);
    const auto body = ReadBits(h, 12, bodyBits, true);
    const bool isDouble = h[8] == h[9] && h[10] == h[11] && h[9] != h[10];
    if (!head || (*head & 8) == 0 || !isDouble || !body) {
        return std::nullopt;
    }
    return Rc6Code{*head & 7, h[8], *body};
}

class Rc6Mode0Decoder : public DecoderIF {
public:
    Reading Read(const Burst& burst) override
    {
        const auto code = ReadRc6(burst, 16);
        if (!code || code->mode != 0) {
            return {};
        }
        return ReadWholeCode(m_held, burst, Protocol::kRc6Mode0, code->body, code->doubleBit);
    }

private:
    HeldKey m_held;
};

/// The customers whose remote controls have a toggle in bit 15.
bool IsMediaCentre(std::uint32_t body)
{
    const std::uint32_t customer = body >> 16;
    return customer == 0x800f || customer == 0x8034 || customer == 0x8046;
}

class Rc6MceDecoder : public DecoderIF {
public:
    Reading Read(const Burst& burst) override
    {
        const auto code = ReadRc6(burst, 32);
        if (!code || code->mode != 6 || code->doubleBit || !IsMediaCentre(code->body)) {
            return {};
        }
        return ReadWholeCode(m_held, burst, Protocol::kRc6Mce, code->body & ~kToggle,
                             (code->body & kToggle) != 0);
    }

private:
    static constexpr std::uint32_t kToggle = 0x8000;

    HeldKey m_held;
};

}  // namespace

std::unique_ptr<DecoderIF> MakeRc5Decoder()
{
    return std::make_unique<Rc5Decoder>();
}

std::unique_ptr<DecoderIF> MakeRc6Decoder(Protocol variant)
{
    if (variant == Protocol::kRc6Mode0) {
        return std::make_unique<Rc6Mode0Decoder>();
    }
    return std::make_unique<Rc6MceDecoder>();
}

}  // namespace Lpm::Devices
