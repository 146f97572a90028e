// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>

namespace OrluConsole {

/// A source of lines.
class InputIF {
public:
    enum class Kind {
        kLine,
        kTooLong,     ///< A line over `Limits::kConsoleLineBytes`, which was skipped.
        kEnd,         ///< The end of input.
        kInterrupted  ///< A signal ended the wait.
    };
    struct Input {
        Kind kind;
        std::string line = {};  ///< Without the line feed.
    };

    virtual ~InputIF() = default;

    /// Blocks until there is a line, the end of input or a signal.
    virtual Input Read() = 0;
};

}  // namespace OrluConsole
