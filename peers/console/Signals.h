// SPDX-License-Identifier: Apache-2.0

#pragma once

namespace OrluConsole {

/// Turns `SIGINT` and `SIGTERM` into something that a wait for input sees too, so that the program
/// ends in order: terminal restored, history kept. Before any thread; lives until the program ends.
class Signals {
public:
    Signals();
    ~Signals();
    Signals(const Signals&) = delete;
    Signals& operator=(const Signals&) = delete;

    /// Blocks until `fd` can be read or has ended. False, from then on at once, after a signal.
    bool WaitFor(int fd);

private:
    int m_fd;
    bool m_ended = false;
};

}  // namespace OrluConsole
