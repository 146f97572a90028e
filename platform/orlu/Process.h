// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <functional>
#include <memory>
#include <string>

#include "orlu/Task.h"

/// What the small programs round the service share; the service itself uses none of it.
namespace Orlu {

/// First in `main`, before any thread: `SIGPIPE` is ignored, `SIGINT` and `SIGTERM` wait for
/// `WaitForEnd`, the log level is read.
void PrepareProcess();

/// Blocks the calling thread until `SIGINT` or `SIGTERM`.
void WaitForEnd();

/// Prints the line `ready` on standard output and flushes it.
void SayReady();

/// Reads lines from a descriptor of any kind on a thread of its own; each line, without its end,
/// goes to `line` on `task`, `ended` follows the last. A line over `Limits::kFrameBytes` is dropped
/// with a log line. Lives until the process ends.
void ReadLines(int fd, NotifyTargetTaskIF* task, std::function<void(std::string)> line,
               std::function<void()> ended);

}  // namespace Orlu
