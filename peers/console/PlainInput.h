// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "console/InputIF.h"
#include "console/Signals.h"

namespace OrluConsole {

/// Lines from a descriptor of any kind. The last one needs no line end.
class PlainInput final : public InputIF {
public:
    PlainInput(int fd, Signals& signals) : m_fd(fd), m_signals(signals) {}

    Input Read() override;

private:
    /// The next line of what was read, if it is there whole.
    bool TakeLine(Input& input);

    int m_fd;
    Signals& m_signals;
    std::string m_kept;
    bool m_passingOver = false;
};

}  // namespace OrluConsole
