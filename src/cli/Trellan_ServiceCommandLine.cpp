// SPDX-License-Identifier: Apache-2.0

#include "cli/Trellan_ServiceCommandLine.h"

#include <utility>

#include "cli/Awaited.h"
#include "cli/CommandLog.h"

namespace TrellanService {

Trellan_ServiceCommandLine::Trellan_ServiceCommandLine(CommandLineNeighboursIF& neighbours)
    : m_neighbours(neighbours)
{
}

Trellan_ServiceCommandLine::~Trellan_ServiceCommandLine()
{
    // A command in progress uses the members, so it must end before they are destroyed.
    if (m_task) {
        m_task->Stop();
        m_task->Queue()->Join();
    }
}

void Trellan_ServiceCommandLine::LogReturned() const
{
    kCommandLog.Log(3, "The instance {} of the Trellan_Service Command Line was returned.",
                    fmt::ptr(this));
}

void Trellan_ServiceCommandLine::Initialize(Trellan_Server* server)
{
    kCommandLog.Put(4, __PRETTY_FUNCTION__);
    m_server = server;
    m_cliClient = std::make_unique<CLIClient>("TrellanServiceCommandLineClient");
    // A task of its own: a command waits for its answer, which must not hold up the server task.
    m_task = IL::CreateTask("TrellanServiceCommandLineTask", "");
    InitializeCommandList();
    m_cliClient->Initialize(
        m_task.get(), m_descriptors,
        [this](const std::string& command, const Arguments& arguments, std::string& response) {
            return HandleCommand(command, arguments, response);
        });
    m_lpmClient = CreateLpmClient("TRSCliLpmClient", m_task.get());
    m_lpmClient->Connect([](const bool& connected) {
        kCommandLog.Put(3, connected ? "TRS lpmClient connected" : "TRS lpmClient not connected");
    });
    kCommandLog.Put(3, "A command line has been established.");
}

void Trellan_ServiceCommandLine::InitializeCommandList()
{
    kCommandLog.Put(4, __PRETTY_FUNCTION__);
    m_descriptors = DescribeCommands();
    for (const CommandRow& row : CommandTable()) {
        m_handlers[row.command] = [this, member = row.handler](const Arguments& arguments,
                                                               const Answer& answer,
                                                               std::string& response) {
            return (this->*member)(arguments, answer, response);
        };
    }
}

int Trellan_ServiceCommandLine::HandleCommand(const std::string& command,
                                              const Arguments& arguments, std::string& response)
{
    kCommandLog.Put(4, __PRETTY_FUNCTION__);
    kCommandLog.Log(3, "Command {}", command);
    const Awaited<std::string> awaited;
    int handled = 0;
    {
        const Answer answer(
            [sender = awaited.MakeSender()](const std::string& text) { sender->Give(text); },
            &m_neighbours.ServerTask());
        const auto handler = m_handlers.find(command);
        if (handler == m_handlers.end()) {
            response = "Unrecognized command";
            return 0;
        }
        handled = handler->second(arguments, answer, response);
    }
    // Only those that may still answer hold the callback now. If the last of them drops it, the
    // wait ends and the command has failed.
    const auto text = handled == 0 ? std::nullopt : awaited.Wait();
    response = text.value_or("Command failed");
    kCommandLog.Log(3, "Response: {}", response);
    return 1;
}

int Trellan_ServiceCommandLine::OnServerTask(std::function<void()> work)
{
    // `work` may refer to local variables of its caller, which waits here until it is done.
    const Awaited<bool> done;
    m_neighbours.ServerTask().QueueNotificationNonBlocking(
        [work = std::move(work), sender = done.MakeSender()] {
            work();
            sender->Give(true);
        });
    return done.Wait().has_value() ? 1 : 0;
}

}  // namespace TrellanService
