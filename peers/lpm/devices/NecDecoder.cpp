// SPDX-License-Identifier: Apache-2.0

#include "devices/Decoder.h"

// 9000 4500, four bytes (each bit 562 and 562 or 1687, the least significant first), 562. While the
// key is held, 9000 2250 562 every 108 ms. The bytes:
//   nec    address, its inverse, command, its inverse
//   necx   address low, address high, command, its inverse
//   nec32  any four bytes
// Samsung: the bytes of necx behind 4500 4500; while the key is held, the whole frame again.

namespace Lpm::Devices {

namespace {

constexpr SpaceCoding kNecBits{562, 562, 1687};
constexpr SpaceCoding kSamsungBits{560, 560, 1690};

struct Bytes {
    std::uint8_t first;
    std::uint8_t second;
    std::uint8_t third;
    std::uint8_t fourth;
};

std::optional<Bytes> ReadBytes(const Burst& burst, std::uint32_t headerMark,
                               const SpaceCoding& coding)
{
    const auto durations = burst.durations;
    if (durations.size() < 2 || !IsAbout(durations[0], headerMark) ||
        !IsAbout(durations[1], 4500)) {
        return std::nullopt;
    }
    const auto bits = ReadSpaceBits(durations.subspan(2), coding, 32);
    if (!bits) {
        return std::nullopt;
    }
    return Bytes{static_cast<std::uint8_t>(*bits), static_cast<std::uint8_t>(*bits >> 8),
                 static_cast<std::uint8_t>(*bits >> 16), static_cast<std::uint8_t>(*bits >> 24)};
}

std::uint32_t Join(unsigned a, unsigned b, unsigned c, unsigned d)
{
    return a << 24 | b << 16 | c << 8 | d;
}

bool AreInverse(unsigned a, unsigned b)
{
    return (a ^ b) == 0xff;
}

bool IsStillHeld(const Burst& burst)
{
    const auto durations = burst.durations;
    return durations.size() == 3 && IsAbout(durations[0], 9000) && IsAbout(durations[1], 2250) &&
           IsAbout(durations[2], 562);
}

class NecDecoder : public DecoderIF {
public:
    explicit NecDecoder(Protocol variant) : m_variant(variant) {}
    Reading Read(const Burst& burst) override;

private:
    static InfraredCode CodeOf(const Bytes& bytes);

    Protocol m_variant;
    HeldKey m_held;
};

InfraredCode NecDecoder::CodeOf(const Bytes& bytes)
{
    const auto& [first, second, third, fourth] = bytes;
    if (!AreInverse(third, fourth)) {
        return {Protocol::kNec32, Join(second, first, fourth, third), std::nullopt, false};
    }
    if (!AreInverse(first, second)) {
        return {Protocol::kNecX, Join(0, first, second, third), std::nullopt, false};
    }
    return {Protocol::kNec, Join(0, 0, first, third), std::nullopt, false};
}

Reading NecDecoder::Read(const Burst& burst)
{
    if (IsStillHeld(burst)) {
        // The short frame has no code: it counts only as the repeat of a code of this variant.
        if (!m_held.IsHeldAt(burst)) {
            return {};
        }
        return ReadWholeCode(m_held, burst, m_variant, m_held.Scancode());
    }
    const auto bytes = ReadBytes(burst, 9000, kNecBits);
    if (!bytes) {
        return {};
    }
    const InfraredCode code = CodeOf(*bytes);
    // The short frames behind a code of a relative belong to that code, not to the one before.
    m_held.Forget();
    if (code.protocol != m_variant) {
        return {};
    }
    return ReadWholeCode(m_held, burst, m_variant, code.scancode);
}

class SamsungDecoder : public DecoderIF {
public:
    Reading Read(const Burst& burst) override
    {
        const auto bytes = ReadBytes(burst, 4500, kSamsungBits);
        if (!bytes || !AreInverse(bytes->third, bytes->fourth)) {
            return {};
        }
        return ReadWholeCode(m_held, burst, Protocol::kSamsung,
                             Join(0, bytes->first, bytes->second, bytes->third));
    }

private:
    HeldKey m_held;
};

}  // namespace

std::unique_ptr<DecoderIF> MakeNecDecoder(Protocol variant)
{
    return std::make_unique<NecDecoder>(variant);
}

std::unique_ptr<DecoderIF> MakeSamsungDecoder()
{
    return std::make_unique<SamsungDecoder>();
}

}  // namespace Lpm::Devices
