// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>
#include <vector>

/// The caller's stack, one text for each frame, innermost first. A frame without a name gives an
/// empty text.
std::vector<std::string> backtrace();

namespace Orlu {

/// Prepares for `SIGSEGV`: gives this thread a stack for the handler and installs `handler`. The
/// handler may call `FaultLog` and `FaultBacktrace`: they allocate nothing and take none of our
/// locks. Two seconds after the fault the process ends in any case.
void InstallFaultHandler(void (*handler)(int));

/// Uses the unwinder once, which initialises itself at its first use, so that a fault does not have
/// to. To be called when the start is done, which it would delay.
void WarmFaultHandler();

/// Gives the calling thread a stack for the fault handler, so that an overflow of its own stack is
/// reported too. Each task's thread calls it once.
void GiveThreadFaultStack();

/// Writes one line at level 1 directly to standard error.
void FaultLog(const char* logger, const char* text);

/// Writes one line for each frame, "<unresolved>" for one without a name.
void FaultBacktrace(const char* logger);

}  // namespace Orlu
