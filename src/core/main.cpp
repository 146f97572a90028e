// SPDX-License-Identifier: Apache-2.0

#include <csignal>

#include <malloc.h>

#include "endpoints/Trellan_ServiceManager.h"
#include "orlu/Backtrace.h"
#include "orlu/SystemUtils.h"

namespace {

constexpr const char* kLogger = "TrellanService Start";

void HandleSegmentationFault(int)
{
    // First of all: a second fault in this handler must end the process.
    std::signal(SIGSEGV, SIG_DFL);
    Orlu::FaultLog(kLogger, "------- TrellanService Segmentation Fault Start --------");
    Orlu::FaultBacktrace(kLogger);
    Orlu::FaultLog(kLogger, "-------- TrellanService Segmentation Fault End ---------");
    // A fault meets the default action when its instruction runs again; a signal that another
    // process sent would be forgotten, so it is raised once more for the return from here.
    std::raise(SIGSEGV);
}

}  // namespace

int main()
{
    // One heap for the few threads: each thread's own costs its pages at the start.
    ::mallopt(M_ARENA_MAX, 1);
    // A client that closes its socket must not end the service; the write fails instead.
    std::signal(SIGPIPE, SIG_IGN);
    Orlu::InstallFaultHandler(HandleSegmentationFault);
    SystemUtils::ThereCanBeOnlyOne();
    auto& manager = TrellanService::Trellan_ServiceManager::GetInstance();
    manager.CreateAllTasks();
    manager.StartAllTasks();
    // Reads the symbols now, since the handler cannot allocate.
    Orlu::WarmFaultHandler();
    manager.JoinAllTasks();
    return 0;
}
