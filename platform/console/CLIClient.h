// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <functional>
#include <list>
#include <memory>
#include <string>
#include <vector>

#include "orlu/Task.h"

/// A service's command line: takes the commands that are typed at the product's consoles, of any
/// number of consoles, one command after the other. Listens under its own name in the IPC
/// directory.
class CLIClient {
public:
    struct CLICmdDescriptor {
        std::string command;  ///< Words with one blank between them.
        std::string help;     ///< May have several lines.
        std::string heading;  ///< Printed by a console before the help.
    };
    using Descriptors = std::vector<std::shared_ptr<CLICmdDescriptor>>;

    /// Gets a command and the words after it, which may hold any bytes, and fills the response.
    /// Returns 0 for a command that it does not know. May block: other consoles wait meanwhile.
    using Handler =
        std::function<int(const std::string& command, const std::list<std::string>& arguments,
                          std::string& response)>;

    explicit CLIClient(std::string name);
    /// The task must have stopped.
    ~CLIClient();
    CLIClient(const CLIClient&) = delete;
    CLIClient& operator=(const CLIClient&) = delete;

    /// From any thread, once. The work is done on `task`, on which `handler` is called. If the
    /// address cannot be used, a line is logged. The command is the longest one of `descriptors`
    /// that the first words of a line form; if there is none, the whole line is passed on as a
    /// command without arguments. A line over `Limits::kConsoleLineBytes` or `kConsoleWords` is
    /// refused and not passed on.
    void Initialize(NotifyTargetTaskIF* task, Descriptors descriptors, Handler handler);

private:
    class Server;
    std::shared_ptr<Server> m_server;
};
