// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "controller/Messages.h"

namespace Controller {

/// How the program ends.
inline constexpr int kAnswered = 0;
inline constexpr int kNoAnswer = 1;
inline constexpr int kUsage = 2;
inline constexpr int kUnreachable = 3;

enum class Mode {
    kWatch,  // prints what comes until it is interrupted
    kLines,  // sends lines of input, prints what comes
    kAsk,    // one request, one answer
    kTell,   // one message without an answer
    kHold,   // a key press that goes on, and its end
    kServe   // stands between the service and the local API until it is interrupted
};

/// What the command line asks for.
struct Command {
    Mode mode = Mode::kWatch;
    ToService message;
    std::chrono::milliseconds hold{0};
};

/// Either a command, or the text and code with which the program ends at once: `output` for
/// standard output, `complaint` one line for standard error.
struct Arguments {
    std::optional<Command> command;
    int code = 0;
    std::string output;
    std::string complaint;
};

/// `words` without the program's own name.
Arguments ReadArguments(const std::vector<std::string>& words);

/// A product key by its number, or by its name without regard to case, with or without "ORLU_".
std::optional<std::uint8_t> ReadKey(std::string_view text);

}  // namespace Controller
