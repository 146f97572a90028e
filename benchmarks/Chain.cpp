// SPDX-License-Identifier: Apache-2.0

#include "benchmarks/Chain.h"

namespace Bench {

namespace {

const std::filesystem::path& LaidOut(const std::filesystem::path& root)
{
    LayOutRoot(root);
    return root;
}

}  // namespace

Chain::Chain(const std::filesystem::path& root, const std::vector<std::string>& command,
             int logLevel, const std::vector<std::string>& settings)
    : sink(LaidOut(root)), program(command, root, logLevel, settings), client(root)
{
    client.SendSourceList();
    client.Warm(sink);
}

}  // namespace Bench
