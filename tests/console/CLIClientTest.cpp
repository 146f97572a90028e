// SPDX-License-Identifier: Apache-2.0

#include "console/CLIClient.h"

#include <gtest/gtest.h>

#include "console/Console.pb.h"
#include "orlu/IPCMessageRouter.h"
#include "orlu/Limits.h"
#include "support/VirtualRuntime.h"

namespace {

using namespace OrluConsole;

TEST(CLIClient, CutsAnAnswerThatNoFrameTakesBehindALine)
{
    VirtualRuntime runtime;
    const auto task = IL::CreateTask("service", "");
    std::string text;
    CLIClient client("Client");
    client.Initialize(
        task.get(), {},
        [&text](const std::string&, const std::list<std::string>&, std::string& response) {
            response = text;
            return 1;
        });
    runtime.RunUntilIdle();
    const auto router = IPCMessageRouterFactory::CreateRouter("console", task.get(), nullptr);
    const auto attempt = Orlu::Runtime().Transport().Connect(
        IPCDirectory::Get().Lookup("Client").Path(), task->Queue(),
        [&router](const Orlu::SocketPtr& socket) { router->Connect(socket, [] {}); });
    const auto ask = [&] {
        std::string response;
        IL::BreakThread(
            [&] {
                Line line;
                line.add_word("get");
                router->SendRequestMessage<Answer>(
                    CONSOLE_LINE, line, Callback<Answer>([&response](const Answer& answer) {
                        response = answer.response();
                    }));
            },
            task.get());
        runtime.RunUntilIdle();
        return response;
    };
    const std::size_t most = Orlu::Limits::kConsoleAnswerBytes;
    text = std::string(most, 'x');
    EXPECT_EQ(ask(), text);
    text += "y";
    EXPECT_EQ(ask(), std::string(most, 'x') + "(cut: 1 bytes more)\n");
    text = std::string(most - 3, 'x') + "\nab\nc";
    EXPECT_EQ(ask(), std::string(most - 3, 'x') + "\n(cut: 4 bytes more)\n");
    router->Disconnect();
    task->Stop();
}

}  // namespace
