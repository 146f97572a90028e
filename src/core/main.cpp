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
    std::signal(SIGSEGV, SIG_DFL);
    Orlu::FaultLog(kLogger, "------- TrellanService Segmentation Fault Start --------");
    Orlu::FaultBacktrace(kLogger);
    Orlu::FaultLog(kLogger, "-------- TrellanService Segmentation Fault End ---------");
    // A fault of this process meets the default action when its instruction runs again. A signal
    // from another process would be lost, so it is raised once more; it is delivered on the return
    // from here.
    std::raise(SIGSEGV);
}

}  // namespace

int main()
{
    // One malloc arena for all threads: an arena for each thread costs several pages at the start.
    ::mallopt(M_ARENA_MAX, 1);
    // A reader of the log that goes away must not end the process.
    std::signal(SIGPIPE, SIG_IGN);
    Orlu::InstallFaultHandler(HandleSegmentationFault);
    // Before anything is built: a second instance must not touch the files of the first.
    SystemUtils::ThereCanBeOnlyOne();
    auto& manager = TrellanService::Trellan_ServiceManager::GetInstance();
    manager.CreateAllTasks();
    manager.StartAllTasks();
    Orlu::WarmFaultHandler();
    manager.JoinAllTasks();
    return 0;
}
