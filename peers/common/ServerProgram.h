// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include <boost/asio/io_context.hpp>

namespace CLI {
class App;
}

namespace Peers {

/// The option `--port` of a program that serves at the loopback address.
void AddPortOption(CLI::App& app, std::uint16_t& port);

/// First in `main`: paths of the command line are taken as they stand, without `ORLU_ROOT`, and a
/// consumer that leaves does not end the program. Returns what `ORLU_ROOT` put before a path.
std::string PrepareServer();

/// Prints the reason on standard error, behind the program's name. Returns the exit code, 1.
int Fail(const char* program, const std::string& why);

/// Returns the port that is served, or nothing and the reason in `why`.
using StartServer = std::function<std::optional<std::uint16_t>(std::string& why)>;

/// Starts the server, prints `port N` if `asked` is 0 and then `ready`, and runs the context until
/// `SIGINT` or `SIGTERM`. Returns the exit code: 0, or 1 with a line on standard error.
int RunServer(const char* program, boost::asio::io_context& context, std::uint16_t asked,
              const StartServer& start);

}  // namespace Peers
