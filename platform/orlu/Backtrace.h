// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>
#include <vector>

/// The caller's stack, a text for each frame, innermost first; an empty text for one that cannot
/// be named.
std::vector<std::string> backtrace();

namespace Orlu {

/// Prepares for `SIGSEGV`: makes what `backtrace` needs, gives this thread a stack of its own for
/// the handler, and installs `handler`. Inside it `FaultLog` and `FaultBacktrace` may be called:
/// they take nothing from the heap and write without waiting for a lock of ours, and two seconds
/// after the fault the process ends in any case.
void InstallFaultHandler(void (*handler)(int));

/// The unwinder sets itself up at its first use: does that in good time. A start need not wait for
/// it.
void WarmFaultHandler();

/// Gives the calling thread a stack for the fault handler, so that an overflow of its own is told
/// too. Each task's thread calls it once.
void GiveThreadFaultStack();

/// One line at level 1 straight to standard error.
void FaultLog(const char* logger, const char* text);

/// One line for each frame, "<unresolved>" for one without a name.
void FaultBacktrace(const char* logger);

}  // namespace Orlu
