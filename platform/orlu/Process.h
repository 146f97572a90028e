// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <functional>
#include <memory>
#include <string>

#include "orlu/Task.h"

/// Functions shared by the programs around the service; the service itself uses none of them.
namespace Orlu {

/// To be called first in `main`, before any thread starts: ignores `SIGPIPE`, keeps `SIGINT` and
/// `SIGTERM` for `WaitForEnd`, and reads the log level.
void PrepareProcess();

/// Blocks the calling thread until `SIGINT` or `SIGTERM`.
void WaitForEnd();

/// Prints the line `ready` on standard output and flushes it.
void SayReady();

/// Reads lines from a descriptor of any kind on a thread of its own. Each line, without its end,
/// goes to `line` on `task`; `ended` is called after the last one. A line over
/// `Limits::kFrameBytes` is dropped with a log line. The thread is not stopped before the process
/// ends.
void ReadLines(int fd, NotifyTargetTaskIF* task, std::function<void(std::string)> line,
               std::function<void()> ended);

}  // namespace Orlu
