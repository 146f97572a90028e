// SPDX-License-Identifier: Apache-2.0

// LIRC's decoder, which nobody here wrote, judges the light: it must name the key that was sent,
// and no key at all when one bit on the way was wrong.

#include <gtest/gtest.h>

#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "infrared/Protocols.h"

using namespace Lpm;

namespace {

struct Case {
    std::string_view protocol;
    std::string_view power;
    std::string_view volumeUp;
    std::vector<unsigned> freeBits;  // that may change without another meaning
};

void PrintTo(const Case& row, std::ostream* out)
{
    *out << row.protocol;
}

const Case kCases[] = {
    {"nec", "0x0408", "0x0402", {}},
    {"necx", "0x835590", "0xc14486", {}},
    {"nec32", "0xa10c900f", "0x12345678", {}},
    {"samsung", "0x070702", "0x070707", {}},
    {"rc5", "0x1e3d", "0x1e50", {0, 2}},
    {"rc6_0", "0x000c", "0x0010", {4}},
    {"rc6_mce", "0x800f040c", "0x800f0410", {21}},
    {"sony12", "0x010015", "0x010012", {}},
    {"sony15", "0x970015", "0x970012", {}},
    {"sony20", "0x1ae215", "0x1a4932", {}},
    {"jvc", "0xa317", "0xa31e", {}},
    {"sharp", "0x0116", "0x0114", {}},
};

using Durations = std::vector<std::uint32_t>;

class Lirc : public testing::TestWithParam<Case> {
protected:
    Lirc() { std::filesystem::create_directories(m_folder); }
    ~Lirc() override { std::filesystem::remove_all(m_folder); }

    /// What LpmService prints for `--render`, as durations.
    Durations Rendered(std::string_view scancode, bool toggle, unsigned repeats) const
    {
        const std::string command = std::string(LPM_SERVICE) + " --render " +
                                    std::string(GetParam().protocol) + ":" + std::string(scancode) +
                                    " --toggle " + (toggle ? "1" : "0") + " --repeats " +
                                    std::to_string(repeats);
        std::istringstream lines(Output(command));
        Durations durations;
        std::string word;
        std::uint32_t number = 0;
        while (lines >> word >> number) {
            if (word != "carrier") {
                EXPECT_EQ(word, durations.size() % 2 == 0 ? "pulse" : "space");
                durations.push_back(number);
            }
        }
        return durations;
    }

    /// The keys that LIRC names, each with a blank behind it. A long dark stands before each light.
    std::string Decoded(const std::vector<Durations>& lights) const
    {
        const std::string file = m_folder + "/light";
        std::ofstream out(file);
        for (const Durations& light : lights) {
            out << "space 1000000\n";
            for (std::size_t i = 0; i < light.size(); ++i) {
                out << (i % 2 == 0 ? "pulse " : "space ") << light[i] << '\n';
            }
        }
        out.close();
        // It writes a log and a dummy output wherever it runs.
        const std::string command = "cd " + m_folder + " && XDG_CACHE_HOME=" + m_folder +
                                    " timeout 30 irsimreceive " LIRC_CONFS "/" +
                                    std::string(GetParam().protocol) + ".lircd.conf " + file;
        return KeyNames(Output(command));
    }

private:
    static std::string Output(const std::string& command)
    {
        std::FILE* pipe = popen(command.c_str(), "r");
        std::string text;
        std::array<char, 4096> buffer{};
        while (std::size_t got = std::fread(buffer.data(), 1, buffer.size(), pipe)) {
            text.append(buffer.data(), got);
        }
        EXPECT_EQ(pclose(pipe), 0)
            << command << " failed; irsimreceive is in Debian's package lirc";
        return text;
    }

    static std::string KeyNames(const std::string& output)
    {
        std::istringstream lines(output);
        std::string names;
        std::string code, repeat, key, remote;
        while (lines >> code >> repeat >> key >> remote) {
            names += key + " ";
        }
        return names;
    }

    const std::string m_folder = testing::TempDir() + "lirc_" + std::to_string(getpid());
};

std::string Times(unsigned count, std::string_view word)
{
    std::string text;
    for (unsigned i = 0; i < count; ++i) {
        text += word;
    }
    return text;
}

/// Bit `number` of each frame's pulses with the length of its opposite.
Durations WithPulseDamaged(Durations light, const ProtocolRow& row, unsigned number)
{
    const std::size_t perFrame = light.size() / row.minimumFrames;
    const bool byMark = row.zero.markUs != row.one.markUs;
    const std::size_t header = row.header.markUs != 0 ? 2 : 0;
    for (std::size_t frame = 0; frame < light.size(); frame += perFrame) {
        std::uint32_t& told = light[frame + header + 2 * number + (byMark ? 0 : 1)];
        const std::uint32_t zero = byMark ? row.zero.markUs : row.zero.spaceUs;
        const std::uint32_t one = byMark ? row.one.markUs : row.one.spaceUs;
        told = told < (zero + one) / 2 ? one : zero;
    }
    return light;
}

/// Bit `number` with its halves exchanged.
Durations WithHalvesExchanged(const Durations& light, const ProtocolRow& row, unsigned number)
{
    std::string cells = row.header.markUs == 0 ? "." : "";  // a first bit that begins dark
    for (std::size_t i = 0; i + 1 < light.size(); ++i) {
        cells.append(light[i] / row.halfBitUs, i % 2 == 0 ? '#' : '.');
    }
    cells.append(4, '.');
    const unsigned width = row.doubleBit == number ? 2 : 1;
    const std::size_t header = row.header.markUs != 0 ? 8 : 0;
    const std::size_t late = row.doubleBit && number > *row.doubleBit ? 2 : 0;
    const std::size_t first = header + late + 2u * number;
    for (std::size_t i = first; i < first + width; ++i) {
        std::swap(cells[i], cells[i + width]);
    }
    Durations damaged;
    std::size_t at = cells.find('#');
    while (at != std::string::npos && at < cells.size()) {
        const std::size_t next = cells.find(cells[at] == '#' ? '.' : '#', at);
        const std::size_t end = next == std::string::npos ? cells.size() : next;
        damaged.push_back(static_cast<std::uint32_t>(end - at) * row.halfBitUs);
        at = next;
    }
    damaged.back() += light.back();
    return damaged;
}

Durations Damaged(const Durations& light, const ProtocolRow& row, unsigned number)
{
    return row.coding == Coding::kManchester ? WithHalvesExchanged(light, row, number)
                                             : WithPulseDamaged(light, row, number);
}

TEST_P(Lirc, NamesTheKeyThatWasSent)
{
    const ProtocolRow& row = *FindProtocol(GetParam().protocol);
    const std::string power = Times(row.minimumFrames, "KEY_POWER ");
    EXPECT_EQ(Decoded({Rendered(GetParam().power, false, 0)}), power);
    EXPECT_EQ(Decoded({Rendered(GetParam().power, true, 0)}), power);
    EXPECT_EQ(Decoded({Rendered(GetParam().power, false, 3)}), power + Times(3, "KEY_POWER "));
    EXPECT_EQ(Decoded({Rendered(GetParam().volumeUp, false, 0)}),
              Times(row.minimumFrames, "KEY_VOLUMEUP "));
}

TEST_P(Lirc, NamesNoKeyWhenOneBitIsWrong)
{
    const ProtocolRow& row = *FindProtocol(GetParam().protocol);
    const Durations intact = Rendered(GetParam().power, false, 0);
    const unsigned bits = row.echoFlips != 0 ? 2 * (row.bits + 1) : row.bits;
    std::vector<Durations> lights;
    for (unsigned bit = 0; bit < bits; ++bit) {
        const bool trailer = row.echoFlips != 0 && bit % (row.bits + 1) == row.bits;
        if (std::ranges::find(GetParam().freeBits, bit) == GetParam().freeBits.end() && !trailer) {
            lights.push_back(Damaged(intact, row, bit));
            EXPECT_NE(lights.back(), intact);
        }
    }
    EXPECT_GE(lights.size(), row.bits - 2);
    EXPECT_EQ(Decoded(lights), "");
    // Twice damaged is intact again: the damage is what the decoder refused.
    lights.clear();
    lights.push_back(Damaged(Damaged(intact, row, 5), row, 5));
    EXPECT_EQ(Decoded(lights), Times(row.minimumFrames, "KEY_POWER "));
}

INSTANTIATE_TEST_SUITE_P(Protocols, Lirc, testing::ValuesIn(kCases),
                         [](const auto& row) { return std::string(row.param.protocol); });

}  // namespace
