// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "console/InputIF.h"
#include "console/Signals.h"

namespace OrluConsole {

/// Reads lines from any descriptor. The last line may lack its line feed.
class PlainInput final : public InputIF {
public:
    PlainInput(int fd, Signals& signals) : m_fd(fd), m_signals(signals) {}

    Input Read() override;

private:
    /// Takes the next complete line of the bytes that were read. False if there is none.
    bool TakeLine(Input& input);

    int m_fd;
    Signals& m_signals;
    std::string m_kept;
    bool m_passingOver = false;
};

}  // namespace OrluConsole
