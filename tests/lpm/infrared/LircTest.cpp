// SPDX-License-Identifier: Apache-2.0

// LIRC's decoder is independent of this project. It must name the key that was rendered.

#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <sstream>

#include "infrared/Protocols.h"
#include "support/TemporaryRoot.h"

using namespace Lpm;

namespace {

/// The keys that LIRC decodes from the output of LpmService's `--render`, each with a blank behind
/// it.
std::string Decoded(const std::string& protocol, const std::string& words)
{
    const TemporaryRoot folder;
    // It writes a log and an output file to its working folder.
    const std::string command =
        "cd " + folder.Path() + " && { echo space 1000000; " LPM_SERVICE " --render " + protocol +
        ":" + words + " | grep -v carrier; } >light && XDG_CACHE_HOME=" + folder.Path() +
        " timeout 30 irsimreceive " LIRC_CONFS "/" + protocol + ".lircd.conf light";
    std::FILE* pipe = popen(command.c_str(), "r");
    std::stringstream output;
    std::array<char, 4096> buffer{};
    while (const std::size_t got = std::fread(buffer.data(), 1, buffer.size(), pipe)) {
        output.write(buffer.data(), static_cast<std::streamsize>(got));
    }
    EXPECT_EQ(pclose(pipe), 0) << command << " failed; irsimreceive is in Debian's package lirc";
    std::string names;
    for (std::string code, repeat, key, remote; output >> code >> repeat >> key >> remote;) {
        names += key + " ";
    }
    return names;
}

TEST(Lirc, NamesTheKeyThatWasSent)
{
    const struct {
        std::string protocol;
        std::string power;
        std::string volumeUp;
    } rows[] = {
        {"nec", "0x0408", "0x0402"},
        {"necx", "0x835590", "0xc14486"},
        {"nec32", "0xa10c900f", "0x12345678"},
        {"samsung", "0x070702", "0x070707"},
        {"rc5", "0x1e3d", "0x1e50"},
        {"rc6_0", "0x000c", "0x0010"},
        {"rc6_mce", "0x800f040c", "0x800f0410"},
        {"sony12", "0x010015", "0x010012"},
        {"sony15", "0x970015", "0x970012"},
        {"sony20", "0x1ae215", "0x1a4932"},
        {"jvc", "0xa317", "0xa31e"},
        {"sharp", "0x0116", "0x0114"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.protocol);
        std::string once, up;
        for (unsigned i = 0; i < FindProtocol(row.protocol)->minimumFrames; ++i) {
            once += "KEY_POWER ";
            up += "KEY_VOLUMEUP ";
        }
        EXPECT_EQ(Decoded(row.protocol, row.power), once);
        EXPECT_EQ(Decoded(row.protocol, row.power + " --toggle 1 --repeats 3"),
                  once + "KEY_POWER KEY_POWER KEY_POWER ");
        EXPECT_EQ(Decoded(row.protocol, row.volumeUp), up);
    }
}

}  // namespace
