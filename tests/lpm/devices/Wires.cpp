// SPDX-License-Identifier: Apache-2.0

#include "Wires.h"

#include <algorithm>
#include <numeric>

namespace Lpm::Devices {

namespace {

struct Stretch {
    std::uint32_t zero;
    std::uint32_t one;
};

/// Ends with the dark that fills the frame up to its period.
Durations Fill(Durations durations, std::uint32_t periodUs)
{
    durations.push_back(periodUs - std::accumulate(durations.begin(), durations.end(), 0U));
    return durations;
}

Durations Spaces(Durations durations, std::string_view bits, std::uint32_t mark, Stretch space)
{
    for (const char bit : bits) {
        if (bit != ' ') {
            durations.insert(durations.end(), {mark, bit == '1' ? space.one : space.zero});
        }
    }
    durations.push_back(mark);
    return durations;
}

/// Appends dark (even number of durations so far) or light.
void Put(Durations& durations, bool light, std::uint32_t us)
{
    const bool lastIsLight = durations.size() % 2 == 1;
    if (durations.empty() && !light) {
        return;
    }
    if (!durations.empty() && lastIsLight == light) {
        durations.back() += us;
    } else {
        durations.push_back(us);
    }
}

Durations Halves(Durations durations, std::string_view bits, std::uint32_t half,
                 bool lightFirstIsOne)
{
    for (const char bit : bits) {
        if (bit == ' ') {
            continue;
        }
        const bool isOne = bit == '1' || bit == 'T';
        const std::uint32_t us = bit == 'T' || bit == 't' ? 2 * half : half;
        Put(durations, isOne == lightFirstIsOne, us);
        Put(durations, isOne != lightFirstIsOne, us);
    }
    if (durations.size() % 2 == 0) {
        durations.pop_back();
    }
    return durations;
}

Durations SamsungFrame(std::string_view bits)
{
    return Fill(Spaces({4500, 4500}, bits, 560, {560, 1690}), 108000);
}

Durations JvcFrame(bool press, std::string_view bits)
{
    return press ? Fill(Spaces({8400, 4200}, bits, 525, {525, 1575}), 59100)
                 : Fill(Spaces({}, bits, 525, {525, 1575}), 46400);
}

Durations SharpHalf(std::string_view bits)
{
    auto durations = Spaces({}, bits, 320, {680, 1680});
    durations.push_back(40000);
    return durations;
}

}  // namespace

Durations NecFrame(std::string_view bits)
{
    return Fill(Spaces({9000, 4500}, bits, 562, {562, 1687}), 108000);
}

Durations NecDitto()
{
    return Fill({9000, 2250, 562}, 108000);
}

Durations SonyFrame(std::string_view bits)
{
    Durations durations{2400};
    for (const char bit : bits) {
        if (bit != ' ') {
            durations.insert(durations.end(), {600, bit == '1' ? 1200U : 600U});
        }
    }
    return Fill(durations, 45000);
}

Durations Rc5Frame(std::string_view bits)
{
    return Fill(Halves({}, bits, 889, false), 113800);
}

Durations Rc6Frame(std::string_view bits)
{
    return Fill(Halves({2664, 888}, bits, 444, true), 106700);
}

const std::vector<Wire>& Wires()
{
    const auto thrice = [](const Durations& frame) {
        return std::vector<Durations>{frame, frame, frame};
    };
    const auto lg = NecFrame("00100000 11011111 00010000 11101111");
    const auto tv = NecFrame("11011010 00100011 10000000 01111111");
    const auto tivo = NecFrame("10100001 00001100 10010000 00001111");
    const auto samsung = SamsungFrame("11100000 11100000 01000000 10111111");
    const auto philips = Rc5Frame("1 1 0 00000 001100");
    const auto hauppauge = Rc5Frame("1 1 1 11110 111101");
    const auto extended = Rc5Frame("1 0 0 00101 000011");
    const auto rc6 = Rc6Frame("1 000 t 00000000 00001100");
    const auto rc6Toggled = Rc6Frame("1 000 T 11111111 01010101");
    const auto mce = Rc6Frame("1 110 t 10000000 00001111 00000100 00001100");
    const auto box = Rc6Frame("1 110 t 10000000 00110100 10000000 00000001");
    const auto sony12 = SonyFrame("1010100 10000");
    const auto sony15 = SonyFrame("0111010 11101001");
    const auto sony20 = SonyFrame("1010100 01011 01000111");
    const auto jvc = JvcFrame(true, "11000000 11101000");
    const auto jvcHeld = JvcFrame(false, "11000000 11101000");
    const std::vector sharp{SharpHalf("10000 01101000 10"), SharpHalf("10000 10010111 01")};
    static const std::vector<Wire> kWires{
        {"lg tv", Protocol::kNec, {lg}, {NecDitto()}, 0x0408, {}, 0},
        {"our tv", Protocol::kNecX, {tv}, {NecDitto()}, 0x5bc401, {}, 0xffff00},
        {"tivo", Protocol::kNec32, {tivo}, {NecDitto()}, 0x3085f009, {}, 0xffffffff},
        {"samsung tv", Protocol::kSamsung, {samsung}, {samsung}, 0x070702, {}, 0xffff00},
        {"philips tv", Protocol::kRc5, {philips}, {philips}, 0x000c, false, 0},
        {"hauppauge", Protocol::kRc5, {hauppauge}, {hauppauge}, 0x1e3d, true, 0},
        {"rc5 extended", Protocol::kRc5, {extended}, {extended}, 0x0543, false, 0},
        {"philips rc6", Protocol::kRc6Mode0, {rc6}, {rc6}, 0x000c, false, 0},
        {"rc6 toggled", Protocol::kRc6Mode0, {rc6Toggled}, {rc6Toggled}, 0xff55, true, 0},
        {"mce", Protocol::kRc6Mce, {mce}, {mce}, 0x800f040c, false, 0},
        {"our box", Protocol::kRc6Mce, {box}, {box}, 0x80340001, true, 0},
        {"sony tv", Protocol::kSony12, thrice(sony12), {sony12}, 0x010015, {}, 0},
        {"sony home", Protocol::kSony15, thrice(sony15), {sony15}, 0x97002e, {}, 0},
        {"sony disc", Protocol::kSony20, thrice(sony20), {sony20}, 0x1ae215, {}, 0},
        {"jvc", Protocol::kJvc, {jvc}, {jvcHeld}, 0x0317, {}, 0xffff},
        {"sharp tv", Protocol::kSharp, sharp, sharp, 0x0116, {}, 0},
    };
    return kWires;
}

const Wire& WireOf(std::string_view name)
{
    return *std::ranges::find(Wires(), name, &Wire::name);
}

}  // namespace Lpm::Devices
