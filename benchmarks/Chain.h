// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "benchmarks/KeyClient.h"
#include "benchmarks/LpmSink.h"
#include "benchmarks/Program.h"

namespace Bench {

/// A client, a program and LpmService, connected in a row under a root of their own, with the code
/// set T2051 ready for keys. The first key has been sent and answered.
struct Chain {
    /// `settings` as for `Program`.
    Chain(const std::filesystem::path& root, const std::vector<std::string>& command, int logLevel,
          const std::vector<std::string>& settings = {});

    LpmSink sink;
    Program program;
    KeyClient client;
};

/// Paths of the programs, of a folder for the roots, and of nginx, lircd and valgrind, which are
/// empty if not installed.
struct Place {
    std::filesystem::path programs;
    std::filesystem::path roots;
    std::string nginx;
    std::string lircd;
    std::string valgrind;

    std::string ProgramPath(const std::string& name) const { return programs / name; }
};

}  // namespace Bench
