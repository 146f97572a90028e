// SPDX-License-Identifier: Apache-2.0

// Compiles the text of a code set to the binary that the blaster stores.

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
    // SystemUtils puts ORLU_ROOT in front of paths; paths of a command line are used as given.
    unsetenv("ORLU_ROOT");
    // protobuf warns of two pairs of key names that differ only by case or by an underscore.
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
