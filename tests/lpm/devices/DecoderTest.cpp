// SPDX-License-Identifier: Apache-2.0

#include <bit>
#include <numeric>
#include <random>
#include <string>

#include <gtest/gtest.h>

#include "Wires.h"
#include "devices/Receiver.h"

namespace Lpm::Devices {
namespace {

using namespace std::chrono_literals;

/// A receiver and the light before it, on a clock that runs as long as the light lasts.
class Bench {
public:
    explicit Bench(Protocol protocol) : m_receiver(protocol), m_carrier(InfoOf(protocol).carrierHz)
    {
    }

    void SetCarrier(std::uint32_t hz) { m_carrier = hz; }
    void Wait(Microseconds time) { m_now += time; }

    /// What was seen, such as "0x0408 t1 repeat, "; "-" for a frame that is foreign.
    std::string Look(const std::vector<Durations>& frames)
    {
        std::string seen;
        for (const Durations& frame : frames) {
            const auto sight = m_receiver.Look({m_carrier, frame}, m_now);
            m_now += Microseconds(std::accumulate(frame.begin(), frame.end(), std::uint64_t{0}));
            seen += sight.known ? "" : "-";
            for (const LightCode& code : sight.codes) {
                seen += Text(code);
                m_last = code.scancode;
            }
        }
        return seen;
    }

    /// The scancode last seen.
    std::optional<std::uint32_t> Last() const { return m_last; }

    static std::string Text(const LightCode& code)
    {
        std::string text = ScancodeText(code.protocol, code.scancode);
        if (code.toggle) {
            text += *code.toggle ? " t1" : " t0";
        }
        return text + (code.repeat ? " repeat, " : ", ");
    }

private:
    Receiver m_receiver;
    std::uint32_t m_carrier;
    Microseconds m_now = 1h;
    std::optional<std::uint32_t> m_last;
};

std::string PressOf(const Wire& wire)
{
    return Bench::Text({wire.protocol, wire.scancode, wire.toggle, false});
}

/// Each duration off by up to that share, anew for each, the same in each run.
std::vector<Durations> Jitter(std::vector<Durations> frames, unsigned percent, unsigned seed)
{
    std::minstd_rand random(seed);
    for (Durations& frame : frames) {
        for (std::uint32_t& duration : frame) {
            const auto share = 100 - percent + random() % (2 * percent + 1);
            duration = static_cast<std::uint32_t>(duration * share / 100);
        }
    }
    return frames;
}

TEST(Decoder, ReadsPublishedCodesOfItsOwnProtocolAndNoOther)
{
    for (const Wire& wire : Wires()) {
        SCOPED_TRACE(wire.name);
        for (unsigned i = 0; i < kProtocols; ++i) {
            const auto protocol = static_cast<Protocol>(i);
            Bench bench(protocol);
            bench.SetCarrier(InfoOf(wire.protocol).carrierHz);
            const std::string foreign(wire.press.size(), '-');
            EXPECT_EQ(bench.Look(wire.press), protocol == wire.protocol ? PressOf(wire) : foreign)
                << InfoOf(protocol).name;
        }
    }
}

/// Two halves less a fifth are one half and 60 %, three less a fifth two and a fifth: with halves,
/// light that is that far off could be anything.
unsigned JitterOf(Protocol protocol)
{
    return InfoOf(protocol).carrierHz == 36000 ? 18 : 20;
}

TEST(Decoder, ReadsCodesWhoseDurationsAreAFifthOff)
{
    for (const Wire& wire : Wires()) {
        SCOPED_TRACE(wire.name);
        for (unsigned seed = 1; seed <= 200; ++seed) {
            Bench bench(wire.protocol);
            const auto light = Jitter(wire.press, JitterOf(wire.protocol), seed);
            ASSERT_EQ(bench.Look(light), PressOf(wire)) << seed;
        }
    }
}

TEST(Decoder, SeesOnlyItsCarrier)
{
    for (const Wire& wire : Wires()) {
        const std::uint32_t centre = InfoOf(wire.protocol).carrierHz;
        for (const std::uint32_t hz :
             {centre - 5000, centre + 5000, centre - 5001, centre + 5001}) {
            Bench bench(wire.protocol);
            bench.SetCarrier(hz);
            bench.Look(wire.press);
            EXPECT_EQ(bench.Last().has_value(), hz - centre + 5000 <= 10000) << wire.name << hz;
        }
    }
}

/// One duration after the other shorter and longer by 60 %, gone in the dark or light round it, and
/// dropped.
std::vector<Durations> Damages(const Durations& frame)
{
    std::vector<Durations> all;
    for (std::size_t i = 0; i < frame.size(); ++i) {
        const auto at = static_cast<std::ptrdiff_t>(i);
        for (const std::uint32_t percent : {40U, 160U}) {
            all.push_back(frame);
            all.back()[i] = frame[i] * percent / 100;
        }
        all.push_back(frame);
        all.back().erase(all.back().begin() + at);
        if (i > 0 && i + 1 < frame.size()) {
            all.push_back(frame);
            all.back()[i - 1] += frame[i] + frame[i + 1];
            all.back().erase(all.back().begin() + at, all.back().begin() + at + 2);
        }
    }
    return all;
}

TEST(Decoder, ReadsNoWrongCodeFromDamagedLight)
{
    for (const Wire& wire : Wires()) {
        SCOPED_TRACE(wire.name);
        for (std::size_t i = 0; i < wire.press.size(); ++i) {
            for (const Durations& damaged : Damages(wire.press[i])) {
                auto light = wire.press;
                light[i] = damaged;
                Bench bench(wire.protocol);
                bench.Look(light);
                const std::uint32_t read = bench.Last().value_or(wire.scancode);
                const std::uint32_t wrong = read ^ wire.scancode;
                ASSERT_EQ(wrong & ~wire.unchecked, 0U) << "read 0x" << std::hex << read;
                // Without a check the long space of a 1, cut short, is that of a 0, and no more.
                ASSERT_EQ(wrong & ~wire.scancode, 0U) << "read 0x" << std::hex << read;
                ASSERT_LE(std::popcount(wrong), 1);
            }
        }
    }
}

TEST(Decoder, TellsAHeldKeyFromANewPress)
{
    for (const Wire& wire : Wires()) {
        SCOPED_TRACE(wire.name);
        Bench bench(wire.protocol);
        const std::string press = PressOf(wire);
        const std::string repeat = press.substr(0, press.size() - 2) + " repeat, ";
        EXPECT_EQ(bench.Look(wire.press), press);
        EXPECT_EQ(bench.Look(wire.held), repeat);
        bench.Wait(90ms);
        EXPECT_EQ(bench.Look(wire.held), repeat) << "a late blaster";
        bench.Wait(1s);
        EXPECT_EQ(bench.Look(wire.press), press) << "the same key later";
    }
}

TEST(Decoder, TakesAFlippedToggleForANewPress)
{
    Bench rc5(Protocol::kRc5);
    EXPECT_EQ(rc5.Look({Rc5Frame("1 1 0 00000 001100"), Rc5Frame("1 1 1 00000 001100")}),
              "0x000c t0, 0x000c t1, ");
    Bench rc6(Protocol::kRc6Mode0);
    EXPECT_EQ(
        rc6.Look({Rc6Frame("1 000 t 00000000 00001100"), Rc6Frame("1 000 T 00000000 00001100")}),
        "0x000c t0, 0x000c t1, ");
    Bench mce(Protocol::kRc6Mce);
    EXPECT_EQ(mce.Look({Rc6Frame("1 110 t 10000000 00110100 00000000 00000001"),
                        Rc6Frame("1 110 t 10000000 00110100 10000000 00000001")}),
              "0x80340001 t0, 0x80340001 t1, ");
}

TEST(Decoder, TakesAFullNecFrameForANewPress)
{
    const Wire& lg = WireOf("lg tv");
    Bench bench(Protocol::kNec);
    EXPECT_EQ(bench.Look({lg.press[0], lg.press[0], NecDitto()}),
              "0x0408, 0x0408, 0x0408 repeat, ");
}

TEST(Decoder, TakesARepeatOnlyBehindItsOwnCode)
{
    const Wire& lg = WireOf("lg tv");
    const Wire& tv = WireOf("our tv");
    Bench nec(Protocol::kNec);
    EXPECT_EQ(nec.Look({NecDitto(), lg.press[0], tv.press[0], NecDitto()}), "-0x0408, --");
    nec.Look(lg.press);
    nec.Wait(101ms);
    EXPECT_EQ(nec.Look({NecDitto()}), "-");

    const Wire& jvc = WireOf("jvc");
    Bench bench(Protocol::kJvc);
    auto other = jvc.held[0];
    other[31] = 1575;
    EXPECT_EQ(bench.Look({jvc.held[0], jvc.press[0], other, jvc.held[0]}),
              "-0x0317, -0x0317 repeat, ");

    const auto& sharp = WireOf("sharp tv").press;
    Bench halves(Protocol::kSharp);
    EXPECT_EQ(halves.Look({sharp[1], sharp[0], sharp[0]}), "-");
    halves.Wait(1s);
    EXPECT_EQ(halves.Look({sharp[1]}), "-");
}

TEST(Decoder, TakesSonyCodesOnlyWhenTheyComeTwice)
{
    const auto up = SonyFrame("0100100 10000");
    const auto down = SonyFrame("1100100 10000");
    Bench bench(Protocol::kSony12);
    EXPECT_EQ(bench.Look({up, down, up, down, down}), "0x010013, ");
    EXPECT_EQ(bench.Look({down, down}), "0x010013 repeat, ");
}

TEST(Decoder, ReadsSeveralBurstsOfOneFrame)
{
    const auto& halves = WireOf("sharp tv").press;
    auto both = halves[0];
    both.insert(both.end(), halves[1].begin(), halves[1].end());
    Bench bench(Protocol::kSharp);
    EXPECT_EQ(bench.Look({both}), "0x0116, ");
}

TEST(Decoder, ReadsNothingFromLightThatIsCutOff)
{
    for (const Wire& wire : Wires()) {
        const Durations& whole = wire.press[0];
        for (std::size_t size = 0; size < whole.size(); ++size) {
            Bench bench(wire.protocol);
            const Durations part(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size));
            EXPECT_EQ(bench.Look({part}), "-") << wire.name << " " << size;
        }
        for (const std::uint32_t duration : {0U, 0xffffffffU}) {
            Bench bench(wire.protocol);
            EXPECT_EQ(bench.Look({Durations(whole.size(), duration)}), "-") << wire.name;
        }
    }
}

}  // namespace
}  // namespace Lpm::Devices
