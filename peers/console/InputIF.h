// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>

namespace OrluConsole {

/// Where lines come from.
class InputIF {
public:
    enum class Kind {
        kLine,
        kTooLong,     ///< A line over `Limits::kConsoleLineBytes`; it was passed over.
        kEnd,         ///< No line any more.
        kInterrupted  ///< A signal.
    };
    struct Input {
        Kind kind;
        std::string line = {};  ///< Without its end.
    };

    virtual ~InputIF() = default;

    /// Blocks until there is one.
    virtual Input Read() = 0;
};

}  // namespace OrluConsole
