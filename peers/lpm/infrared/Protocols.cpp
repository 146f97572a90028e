// SPDX-License-Identifier: Apache-2.0

#include "infrared/Protocols.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <charconv>

namespace Lpm {
namespace {

constexpr std::uint64_t Inverted(std::uint64_t byte)
{
    return byte ^ 0xff;
}

constexpr std::uint64_t Bytes(std::uint64_t first, std::uint64_t second, std::uint64_t third,
                              std::uint64_t fourth)
{
    return first | second << 8 | third << 16 | fourth << 24;
}

/// 0xAACC: address, its inverse, command, its inverse.
constexpr std::uint64_t NecPayload(std::uint32_t scancode, bool)
{
    const std::uint64_t address = scancode >> 8 & 0xff;
    const std::uint64_t command = scancode & 0xff;
    return Bytes(address, Inverted(address), command, Inverted(command));
}

/// 0xAABBCC: two address bytes, the upper first, command, its inverse.
constexpr std::uint64_t NecxPayload(std::uint32_t scancode, bool)
{
    const std::uint64_t command = scancode & 0xff;
    return Bytes(scancode >> 16 & 0xff, scancode >> 8 & 0xff, command, Inverted(command));
}

/// 0xBBAADDCC: sent in the order A, B, C, D. The kernel's convention puts the byte in the place of
/// an inverse above the byte before it.
constexpr std::uint64_t Nec32Payload(std::uint32_t scancode, bool)
{
    return Bytes(scancode >> 16 & 0xff, scancode >> 24 & 0xff, scancode & 0xff,
                 scancode >> 8 & 0xff);
}

/// 0xSSCC: start bit, inverse of command bit 6, toggle, five bits of system, six of command.
constexpr std::uint64_t Rc5Payload(std::uint32_t scancode, bool toggle)
{
    const std::uint64_t field = (scancode & 0x40) == 0 ? 1 : 0;
    return std::uint64_t{1} << 13 | field << 12 | (toggle ? 1u : 0u) << 11 |
           (scancode >> 8 & 0x1f) << 6 | (scancode & 0x3f);
}

/// 0xAACC: start bit, mode 000, toggle of double length, address, command.
constexpr std::uint64_t Rc6Mode0Payload(std::uint32_t scancode, bool toggle)
{
    return std::uint64_t{1} << 20 | (toggle ? 1u : 0u) << 16 | scancode;
}

/// 0xCCCCDDDD: start bit, mode 110, a 0 of double length, 32 bits of which number 15 is the toggle.
constexpr std::uint64_t Rc6McePayload(std::uint32_t scancode, bool toggle)
{
    return std::uint64_t{0b11100} << 32 | scancode | (toggle ? 0x8000u : 0u);
}

/// 0xDD00FF: seven bits of function, then the device.
constexpr std::uint64_t SonyPayload(std::uint32_t scancode, bool)
{
    return (scancode & 0x7f) | (scancode >> 16 & 0xff) << 7;
}

/// 0xDDEEFF: seven bits of function, five of device, eight of the extended device.
constexpr std::uint64_t Sony20Payload(std::uint32_t scancode, bool)
{
    return (scancode & 0x7f) | (scancode >> 16 & 0x1f) << 7 | (scancode >> 8 & 0xff) << 12;
}

/// 0xAACC: address, command.
constexpr std::uint64_t JvcPayload(std::uint32_t scancode, bool)
{
    return (scancode >> 8 & 0xff) | (scancode & 0xff) << 8;
}

/// 0xAACC: five bits of address, command, and the two bits that mark the first half of the pair.
constexpr std::uint64_t SharpPayload(std::uint32_t scancode, bool)
{
    return (scancode >> 8 & 0x1f) | (scancode & 0xff) << 5 | 1u << 13;
}

constexpr ProtocolRow NecKind(Protocol id, std::string_view name, std::uint32_t mask,
                              std::uint64_t (*payload)(std::uint32_t, bool))
{
    return {.id = id,
            .name = name,
            .coding = Coding::kPulses,
            .carrierHz = 38000,
            .scancodeMask = mask,
            .payload = payload,
            .bits = 32,
            .header = {9000, 4500},
            .zero = {562, 562},
            .one = {562, 1687},
            .trailerUs = 562,
            .periodUs = 108000,
            .repeat = Repeat::kDitto,
            .ditto = {9000, 2250}};
}

constexpr ProtocolRow SonyKind(Protocol id, std::string_view name, unsigned bits,
                               std::uint32_t mask, std::uint64_t (*payload)(std::uint32_t, bool))
{
    return {.id = id,
            .name = name,
            .coding = Coding::kPulses,
            .carrierHz = 40000,
            .scancodeMask = mask,
            .payload = payload,
            .bits = bits,
            .header = {2400, 600},
            .zero = {600, 600},
            .one = {1200, 600},
            .periodUs = 45000,
            // The codes have no check, so receivers compare frames; remote controls send three.
            .minimumFrames = 3};
}

constexpr ProtocolRow Rc6Kind(Protocol id, std::string_view name, unsigned bits, std::uint32_t mask,
                              std::uint64_t (*payload)(std::uint32_t, bool))
{
    return {.id = id,
            .name = name,
            .coding = Coding::kManchester,
            .carrierHz = 36000,
            .scancodeMask = mask,
            .payload = payload,
            .bits = bits,
            .header = {2664, 888},
            .halfBitUs = 444,
            .oneStartsWithMark = true,
            .doubleBit = 4,
            .periodUs = 106667};
}

constexpr std::array kProtocols = {
    NecKind(Protocol::kNec, "nec", 0xffff, NecPayload),
    NecKind(Protocol::kNecx, "necx", 0xffffff, NecxPayload),
    NecKind(Protocol::kNec32, "nec32", 0xffffffff, Nec32Payload),
    ProtocolRow{.id = Protocol::kSamsung,
                .name = "samsung",
                .coding = Coding::kPulses,
                .carrierHz = 38000,
                .scancodeMask = 0xffffff,
                .payload = NecxPayload,
                .bits = 32,
                .header = {4500, 4500},
                .zero = {560, 560},
                .one = {560, 1690},
                .trailerUs = 560,
                .periodUs = 108000},
    ProtocolRow{.id = Protocol::kRc5,
                .name = "rc5",
                .coding = Coding::kManchester,
                .carrierHz = 36000,
                .scancodeMask = 0x1f7f,
                .payload = Rc5Payload,
                .bits = 14,
                .halfBitUs = 889,
                .periodUs = 113778},
    Rc6Kind(Protocol::kRc6Mode0, "rc6_0", 21, 0xffff, Rc6Mode0Payload),
    Rc6Kind(Protocol::kRc6Mce, "rc6_mce", 37, 0xffff7fff, Rc6McePayload),
    SonyKind(Protocol::kSony12, "sony12", 12, 0x1f007f, SonyPayload),
    SonyKind(Protocol::kSony15, "sony15", 15, 0xff007f, SonyPayload),
    SonyKind(Protocol::kSony20, "sony20", 20, 0x1fff7f, Sony20Payload),
    ProtocolRow{.id = Protocol::kJvc,
                .name = "jvc",
                .coding = Coding::kPulses,
                .carrierHz = 38000,
                .scancodeMask = 0xffff,
                .payload = JvcPayload,
                .bits = 16,
                .header = {8400, 4200},
                .zero = {525, 525},
                .one = {525, 1575},
                .trailerUs = 525,
                .periodUs = 59100,
                .repeatPeriodUs = 46400,
                .repeat = Repeat::kHeaderless},
    ProtocolRow{.id = Protocol::kSharp,
                .name = "sharp",
                .coding = Coding::kPulses,
                .carrierHz = 38000,
                .scancodeMask = 0x1fff,
                .payload = SharpPayload,
                .bits = 15,
                .zero = {320, 680},
                .one = {320, 1680},
                .trailerUs = 320,
                .echoFlips = 0x7fe0,  // all bits but the address
                .gapUs = 40000},
    ProtocolRow{
        .id = Protocol::kRaw, .name = "raw", .coding = Coding::kStored, .scancodeMask = 0xffffffff},
};

constexpr bool NumbersAreInOrder()
{
    for (std::size_t i = 0; i < kProtocols.size(); ++i) {
        if (static_cast<std::size_t>(kProtocols[i].id) != i + 1) {
            return false;
        }
    }
    return true;
}
// FindProtocol uses the number as an index.
static_assert(NumbersAreInOrder());

constexpr std::uint32_t Length(const Pulse& pulse)
{
    return pulse.markUs + pulse.spaceUs;
}

/// A period shorter than its frame would need a negative space behind the frame.
constexpr bool LongestFramesFitTheirPeriods()
{
    return std::ranges::all_of(kProtocols, [](const ProtocolRow& row) {
        const std::uint32_t bit = std::max({Length(row.zero), Length(row.one), 2 * row.halfBitUs});
        const std::uint32_t body =
            row.bits * bit + row.trailerUs + (row.doubleBit ? 2 * row.halfBitUs : 0);
        const std::uint32_t repeatHeader =
            row.repeat == Repeat::kHeaderless ? 0 : Length(row.header);
        return row.periodUs == 0 ||
               (body + Length(row.header) < row.periodUs &&
                (row.repeatPeriodUs == 0 || body + repeatHeader < row.repeatPeriodUs));
    });
}
static_assert(LongestFramesFitTheirPeriods());

}  // namespace

std::span<const ProtocolRow> AllProtocols()
{
    return kProtocols;
}

const ProtocolRow* FindProtocol(std::uint8_t number)
{
    return number >= 1 && number <= kProtocols.size() ? &kProtocols[number - 1u] : nullptr;
}

const ProtocolRow* FindProtocol(std::string_view name)
{
    const auto found = std::ranges::find(kProtocols, name, &ProtocolRow::name);
    return found == kProtocols.end() ? nullptr : &*found;
}

bool FitsProtocol(const ProtocolRow& row, std::uint32_t scancode)
{
    return (scancode & ~row.scancodeMask) == 0;
}

std::optional<std::uint32_t> ParseScancode(const ProtocolRow& row, std::string_view text,
                                           std::string& why)
{
    const bool hex = text.starts_with("0x") || text.starts_with("0X");
    const std::string_view digits = text.substr(hex ? 2 : 0);
    const char* const end = digits.data() + digits.size();
    std::uint32_t scancode = 0;
    const auto [stop, error] = std::from_chars(digits.data(), end, scancode, hex ? 16 : 10);
    // A number above 32 bits is a scancode that does not fit, not a malformed one.
    if (error == std::errc::invalid_argument || stop != end) {
        why = fmt::format("'{}' is no scancode; 0x0408 or 1032 is", text);
        return std::nullopt;
    }
    if (error != std::errc{} || !FitsProtocol(row, scancode)) {
        why = fmt::format("scancode {} does not fit {}, whose bits are {:#x}", text, row.name,
                          row.scancodeMask);
        return std::nullopt;
    }
    return scancode;
}

}  // namespace Lpm
