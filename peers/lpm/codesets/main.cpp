// SPDX-License-Identifier: Apache-2.0

// Turns the text of a code set into the binary that the blaster holds.

#include "common/CommandLine.h"
#include "lpm/codesets/CodesetText.h"
#include "orlu/SystemUtils.h"

#include <google/protobuf/stubs/logging.h>

#include <CLI/CLI.hpp>

#include <algorithm>
#include <cstdlib>
#include <iostream>

namespace {

constexpr int kFailed = 1;

int Fail(const std::string& path, const std::string& why)
{
    std::string line = path + ": " + why;
    std::ranges::replace(line, '\n', ' ');
    std::cerr << "CodesetCompiler: " << line << '\n';
    return kFailed;
}

int Compile(const std::string& in, const std::string& out)
{
    const std::optional<std::string> text = SystemUtils::ReadFile(in);
    if (!text) {
        return Fail(in, "it cannot be read");
    }
    std::string why;
    const std::optional<std::vector<std::uint8_t>> binary = Lpm::CompileCodeset(*text, why);
    if (!binary) {
        return Fail(in, why);
    }
    const std::string bytes(binary->begin(), binary->end());
    const bool written = SystemUtils::WriteFile(bytes.data(), bytes.data() + bytes.size(), out);
    return written ? 0 : Fail(out, "it cannot be written");
}

}  // namespace

// NOLINTNEXTLINE(bugprone-exception-escape): only for want of memory
int main(int argc, char** argv)
{
    // Paths on a command line mean what they say, in whatever root a product is running.
    unsetenv("ORLU_ROOT");
    // It finds fault with two pairs of key names that differ by their case or by an underscore.
    google::protobuf::SetLogHandler(nullptr);
    CLI::App app("Turns the text of a code set into the binary that the blaster holds",
                 "CodesetCompiler");
    app.set_version_flag("--version", std::string("CodesetCompiler ") + TRELLAN_VERSION);
    std::string in;
    std::string out;
    app.add_option("IN", in, "The text, JSON")->required();
    app.add_option("OUT", out, "The binary, replaced as a whole")->required();
    int exitCode = 0;
    if (!Peers::ParseCommandLine(app, argc, argv, exitCode)) {
        return exitCode;
    }
    return Compile(in, out);
}
