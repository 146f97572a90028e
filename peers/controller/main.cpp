// SPDX-License-Identifier: Apache-2.0

#include <atomic>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <unistd.h>

#include "controller/PageResources.h"
#include "controller/Session.h"
#include "orlu/Process.h"

namespace {

std::atomic<int> s_code{-1};

void EndProcess(int code)
{
    s_code = code;
    ::kill(::getpid(), SIGTERM);
}

/// Without a reader of standard output the program ends as with Ctrl-C.
void Print(const std::string& line)
{
    if (std::printf("%s\n", line.c_str()) < 0 || std::fflush(stdout) != 0) {
        ::kill(::getpid(), SIGTERM);
    }
}

void Complain(const std::string& complaint)
{
    std::fprintf(stderr, "ProductController: %s\n", complaint.c_str());
}

int Run(Controller::Command command)
{
    Orlu::PrepareProcess();
    const auto task = IL::CreateTask("ProductControllerThread", "");
    const bool lines = command.mode == Controller::Mode::kLines;
    std::unique_ptr<Controller::Session> session;
    session = std::make_unique<Controller::Session>(
        task.get(), std::move(command),
        Controller::Session::Output{.line = Print,
                                    .complaint = Complain,
                                    .ready =
                                        [&session, task, lines] {
                                            Orlu::SayReady();
                                            if (lines) {
                                                Orlu::ReadLines(
                                                    STDIN_FILENO, task.get(),
                                                    [&session](const std::string& text) {
                                                        session->Line(text);
                                                    },
                                                    [&session] { session->InputEnded(); });
                                            }
                                        },
                                    .end = EndProcess});
    IL::BreakThread([&session] { session->Start(); }, task.get());

    // A signal and the end of the session both wake this thread. The first signal ends the session;
    // a second one ends the process, in case the session waits for an answer.
    for (bool asked = false; s_code < 0;) {
        Orlu::WaitForEnd();
        if (s_code < 0 && std::exchange(asked, true)) {
            std::_Exit(0);
        }
        if (s_code < 0) {
            IL::BreakThread([&session] { session->Interrupt(); }, task.get());
        }
    }
    task->Stop();
    task->Queue()->Join();
    return s_code;
}

int Serve()
{
    Orlu::PrepareProcess();
    const auto task = IL::CreateTask("ProductControllerThread", "");
    std::unique_ptr<Controller::PageResources> api;
    IL::BreakThread(
        [&api, &task] {
            api = std::make_unique<Controller::PageResources>(
                task.get(), Controller::LocalApiPort(), [] { Orlu::SayReady(); });
            api->Start();
        },
        task.get());
    Orlu::WaitForEnd();
    // Two works: the release of a held key is sent at the end of the first, and destroying the
    // connection in the same work would drop it.
    IL::BreakThread([&api] { api->Stop(); }, task.get());
    IL::BreakThread([&api] { api.reset(); }, task.get());
    task->Stop();
    task->Queue()->Join();
    return 0;
}

}  // namespace

int main(int argc, char** argv)
{
    auto arguments =
        Controller::ReadArguments(std::vector<std::string>(argv + (argc > 0 ? 1 : 0), argv + argc));
    if (arguments.command && arguments.command->mode == Controller::Mode::kServe) {
        return Serve();
    }
    if (arguments.command) {
        return Run(std::move(*arguments.command));
    }
    std::fputs(arguments.output.c_str(), stdout);
    if (!arguments.complaint.empty()) {
        Complain(arguments.complaint);
    }
    return arguments.code;
}
