// SPDX-License-Identifier: Apache-2.0

#include <bit>
#include <numeric>
#include <random>
#include <string>

#include <gtest/gtest.h>

#include "devices/Receiver.h"
#include "lpm/Rendered.h"

namespace Lpm::Devices {
namespace {

using namespace std::chrono_literals;

struct Row {
    std::string_view protocol;
    std::vector<std::uint32_t> scancodes;
    std::uint32_t unchecked;  ///< scancode bits without a check in the protocol
};

const Row kRows[] = {
    {"nec", {0x0408, 0x0000, 0xffff, 0x55aa, 0x8001}, 0},
    {"necx", {0x5bc401, 0xc14486, 0x000100, 0xfffeff, 0x866b1c}, 0xffff00},
    {"nec32", {0x3085f009, 0x77e12040, 0x00000001, 0xfffffffe}, 0xffffffff},
    {"samsung", {0x070702, 0xe0e000, 0x0b0bff, 0x000001}, 0xffff00},
    {"rc5", {0x000c, 0x1e3d, 0x1f7f, 0x0040, 0x0543}, 0},
    {"rc6_0", {0x000c, 0x0000, 0xffff, 0x55aa, 0x8001}, 0},
    {"rc6_mce", {0x800f040c, 0x80340001, 0x800f7fff, 0x80460000}, 0},
    {"sony12", {0x010015, 0x00007f, 0x1f0000, 0x100001}, 0},
    {"sony15", {0x97002e, 0xff0000, 0x00007f, 0x540055}, 0},
    {"sony20", {0x1ae215, 0x1a4915, 0x00ff00, 0x1f007f, 0x1fff7f}, 0},
    {"jvc", {0x0317, 0x0000, 0xffff, 0x55aa, 0x8001}, 0xffff},
    {"sharp", {0x0116, 0x0000, 0x1fff, 0x1055, 0x01aa}, 0},
};

/// A receiver and frames for it, on a clock that advances by the length of each frame.
class ReceiverBench {
public:
    ReceiverBench(Protocol protocol, std::uint32_t carrierHz)
        : m_receiver(protocol), m_carrier(carrierHz)
    {
    }
    explicit ReceiverBench(std::string_view protocol)
        : ReceiverBench(*ProtocolByName(protocol), InfoOf(*ProtocolByName(protocol)).carrierHz)
    {
    }

    void Wait(Microseconds time) { m_now += time; }

    /// The codes that were read, such as "0x0408 t1 repeat, "; "-" for a frame of another protocol.
    std::string Receive(const std::vector<Durations>& frames)
    {
        std::string seen;
        for (const Durations& frame : frames) {
            const auto reception = m_receiver.Receive({m_carrier, frame}, m_now);
            m_now += Microseconds(std::accumulate(frame.begin(), frame.end(), std::uint64_t{0}));
            seen += reception.isOfProtocol ? "" : "-";
            for (const InfraredCode& code : reception.codes) {
                seen += ScancodeText(code.protocol, code.scancode);
                seen += code.toggle ? (*code.toggle ? " t1" : " t0") : "";
                seen += code.repeat ? " repeat, " : ", ";
                last = code.scancode;
            }
        }
        return seen;
    }

    std::optional<std::uint32_t> last;  ///< the last scancode read

private:
    Receiver m_receiver;
    std::uint32_t m_carrier;
    Microseconds m_now = 1h;
};

std::string Text(std::string_view protocol, std::uint32_t scancode, bool toggle = false)
{
    return ScancodeText(*ProtocolByName(protocol), scancode) +
           (protocol.starts_with("rc") ? (toggle ? " t1" : " t0") : "");
}

TEST(Decoder, TellsAHeldKeyFromANewPress)
{
    for (const Row& row : kRows) {
        for (const std::uint32_t scancode : row.scancodes) {
            ReceiverBench bench(row.protocol);
            for (const bool toggle : {false, true}) {
                const std::string text = Text(row.protocol, scancode, toggle);
                SCOPED_TRACE(std::string(row.protocol) + " " + text);
                const Rendered rendered(row.protocol, scancode, toggle);
                EXPECT_EQ(bench.Receive(rendered.press), text + ", ");
                EXPECT_EQ(bench.Receive({rendered.held}), text + " repeat, ");
                bench.Wait(90ms);
                EXPECT_EQ(bench.Receive({rendered.held}), text + " repeat, ") << "a late blaster";
                bench.Wait(text.ends_with(" t0") ? 0s : 1s);
            }
            const Rendered again(row.protocol, scancode, true);
            EXPECT_EQ(bench.Receive(again.press), Text(row.protocol, scancode, true) + ", ");
        }
    }
}

TEST(Decoder, ReadsItsOwnProtocolAndNoOther)
{
    for (const Row& row : kRows) {
        const Rendered rendered(row.protocol, row.scancodes[0]);
        for (unsigned i = 0; i < kProtocols; ++i) {
            const auto& info = InfoOf(static_cast<Protocol>(i));
            ReceiverBench bench(info.protocol, rendered.carrierHz);
            EXPECT_EQ(bench.Receive(rendered.press),
                      info.name == row.protocol ? Text(row.protocol, row.scancodes[0]) + ", "
                                                : std::string(rendered.press.size(), '-'))
                << row.protocol << " by " << info.name;
        }
        for (const std::uint32_t hz : {rendered.carrierHz - 5001, rendered.carrierHz + 5001}) {
            ReceiverBench bench(*ProtocolByName(row.protocol), hz);
            bench.Receive(rendered.press);
            EXPECT_FALSE(bench.last) << row.protocol;
        }
    }
}

TEST(Decoder, ReadsCodesWhoseDurationsAreAFifthOff)
{
    std::minstd_rand random(1);
    for (const Row& row : kRows) {
        const Rendered exact(row.protocol, row.scancodes[0]);
        // With half bits, a deviation of a fifth is ambiguous: two halves less a fifth are one half
        // and 60 %, three less a fifth are two and a fifth.
        const unsigned percent = exact.carrierHz == 36000 ? 18 : 20;
        for (unsigned round = 0; round < 200; ++round) {
            auto rendered = exact.press;
            for (std::uint32_t& duration : rendered[round % rendered.size()]) {
                duration = static_cast<std::uint32_t>(
                    duration * (100 - percent + random() % (2 * percent + 1)) / 100);
            }
            ASSERT_EQ(ReceiverBench(row.protocol).Receive(rendered),
                      Text(row.protocol, row.scancodes[0]) + ", ");
        }
    }
}

/// Damaged copies of a frame: cut off at each duration; each duration shorter and longer by 60 %,
/// dropped, and merged with its two neighbours.
std::vector<Durations> Damages(const Durations& frame)
{
    std::vector<Durations> all{Durations(frame.size(), 0), Durations(frame.size(), 0xffffffff)};
    for (std::size_t i = 0; i < frame.size(); ++i) {
        const auto at = static_cast<std::ptrdiff_t>(i);
        all.emplace_back(frame.begin(), frame.begin() + at);
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

TEST(Decoder, ReadsNoWrongCodeFromADamagedFrame)
{
    for (const Row& row : kRows) {
        SCOPED_TRACE(row.protocol);
        const std::uint32_t scancode = row.scancodes[0];
        const Rendered intact(row.protocol, scancode);
        for (std::size_t i = 0; i < intact.press.size(); ++i) {
            for (const Durations& damaged : Damages(intact.press[i])) {
                auto rendered = intact.press;
                rendered[i] = damaged;
                ReceiverBench bench(row.protocol);
                bench.Receive(rendered);
                const std::uint32_t wrong = bench.last.value_or(scancode) ^ scancode;
                ASSERT_EQ(wrong & ~row.unchecked, 0U) << "read " << *bench.last;
                // Without a check a 1 whose long duration is cut short reads as a 0. Nothing else
                // may change.
                ASSERT_EQ(wrong & ~scancode, 0U) << "read " << *bench.last;
                ASSERT_LE(std::popcount(wrong), 1);
            }
        }
    }
}

TEST(Decoder, TakesARepeatOnlyBehindItsOwnCode)
{
    const Rendered lg("nec", 0x0408);
    const Durations tv = Rendered("necx", 0x5bc401).press[0];
    ReceiverBench nec("nec");
    EXPECT_EQ(nec.Receive({lg.held, lg.press[0], lg.press[0], lg.held, tv, lg.held}),
              "-0x0408, 0x0408, 0x0408 repeat, --");
    nec.Receive(lg.press);
    nec.Wait(101ms);
    EXPECT_EQ(nec.Receive({lg.held}), "-");

    const Rendered jvc("jvc", 0x0317);
    ReceiverBench bench("jvc");
    EXPECT_EQ(bench.Receive({jvc.held, jvc.press[0], Rendered("jvc", 0x8317).held, jvc.held}),
              "-0x0317, -0x0317 repeat, ");

    const Durations up = Rendered("sony12", 0x010012).held;
    const Durations down = Rendered("sony12", 0x010013).held;
    ReceiverBench sony("sony12");
    EXPECT_EQ(sony.Receive({up, down, up, down, down}), "0x010013, ") << "only what comes twice";
    EXPECT_EQ(sony.Receive({down, down}), "0x010013 repeat, ");
}

TEST(Decoder, TakesTheSecondHalfOnlyBehindTheFirst)
{
    const Durations both = Rendered("sharp", 0x0116).press[0];
    const auto middle = both.begin() + static_cast<std::ptrdiff_t>(both.size() / 2);
    const Durations first(both.begin(), middle);
    const Durations second(middle, both.end());
    ReceiverBench bench("sharp");
    EXPECT_EQ(bench.Receive({second, first, first}), "-");
    bench.Wait(1s);
    EXPECT_EQ(bench.Receive({second}), "-");
    EXPECT_EQ(bench.Receive({first, second}), "0x0116, ");
}

}  // namespace
}  // namespace Lpm::Devices
