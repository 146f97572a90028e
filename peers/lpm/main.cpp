// SPDX-License-Identifier: Apache-2.0

#include "infrared/RenderText.h"

#include <unistd.h>

#include <cstdio>
#include <memory>
#include <string>

#include "lpm/LpmService.h"
#include "lpm/Options.h"
#include "orlu/ConditionSemaphore.h"
#include "orlu/Process.h"
#include "orlu/SystemUtils.h"

namespace {

constexpr int kUsage = 2;

int Render(const Lpm::Options& options)
{
    std::string why;
    const auto text = Lpm::RenderText(options.render, options.toggle, options.repeats, why);
    if (!text) {
        std::fprintf(stderr, "LpmService: %s\n", why.c_str());
        return kUsage;
    }
    std::fputs(text->c_str(), stdout);
    return std::fflush(stdout) == 0 ? 0 : 1;
}

/// Runs `work` on the task and waits until it has returned.
void RunOn(NotifyTargetTaskIF* task, const Orlu::Work& work)
{
    ConditionSemaphore done(0);
    IL::BreakThread(
        [&work, &done] {
            work();
            done.Signal();
        },
        task);
    done.Wait();
}

int Serve(const Lpm::Options& options)
{
    SystemUtils::ThereCanBeOnlyOne();
    const auto task = IL::CreateTask("LpmServiceThread", "");
    std::unique_ptr<Lpm::LpmService> service;
    bool started = false;
    std::string why = "it cannot listen";
    RunOn(task.get(), [&service, &started, &why, &options, &task] {
        service = Lpm::LpmService::Create(task.get(), options, why);
        started = service && service->Start();
    });
    if (started) {
        Orlu::ReadLines(
            STDIN_FILENO, task.get(),
            [&service](const std::string& line) {
                if (service) {
                    service->HandleLine(line);
                }
            },
            [] {});
        Orlu::SayReady();
        Orlu::WaitForEnd();
    } else {
        std::fprintf(stderr, "LpmService: %s\n", why.c_str());
    }
    // In one work: after Stop the task drops queued work, such as a client just accepted, which
    // would use the destroyed service.
    RunOn(task.get(), [&service, &task] {
        service.reset();
        task->Stop();
    });
    task->Queue()->Join();
    return started ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv)
{
    int exitCode = 0;
    const auto options = Lpm::ParseOptions(argc, argv, exitCode);
    if (!options) {
        return exitCode;
    }
    if (!options->render.empty()) {
        return Render(*options);
    }
    Orlu::PrepareProcess();
    return Serve(*options);
}
