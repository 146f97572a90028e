// SPDX-License-Identifier: Apache-2.0

#pragma once

namespace OrluConsole {

/// Makes a wait for input end with `SIGINT` and `SIGTERM`, so that the program can restore the
/// terminal and keep the history before it ends. Construct it before any thread; keep it until the
/// program ends.
class Signals {
public:
    Signals();
    ~Signals();
    Signals(const Signals&) = delete;
    Signals& operator=(const Signals&) = delete;

    /// Blocks until `fd` is readable or at its end. After a signal returns false, and at once in
    /// all further calls.
    bool WaitFor(int fd);

private:
    int m_fd;
    bool m_ended = false;
};

}  // namespace OrluConsole
