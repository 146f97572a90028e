// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "controller/Messages.h"

namespace Controller {

/// Exit codes.
inline constexpr int kAnswered = 0;
inline constexpr int kNoAnswer = 1;
inline constexpr int kUsage = 2;
inline constexpr int kUnreachable = 3;

enum class Mode {
    kWatch,  // prints events and answers until it is interrupted
    kLines,  // sends lines of input, prints events and answers
    kAsk,    // one request, one answer
    kTell,   // one message without an answer
    kHold,   // the press of a held key, and its release
    kServe   // connects the service and the local API until it is interrupted
};

/// The command of a command line.
struct Command {
    Mode mode = Mode::kWatch;
    ToService message;
    std::chrono::milliseconds hold{0};
};

/// Either a command, or the exit code and texts with which the program ends at once: `output` for
/// standard output, `complaint` as one line for standard error.
struct Arguments {
    std::optional<Command> command;
    int code = 0;
    std::string output;
    std::string complaint;
};

/// `words` does not contain the program's name.
Arguments ReadArguments(const std::vector<std::string>& words);

/// A product key by its number, or by its name without regard to case, with or without "ORLU_".
std::optional<std::uint8_t> ReadKey(std::string_view text);

}  // namespace Controller
