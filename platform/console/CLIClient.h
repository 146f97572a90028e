// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <functional>
#include <list>
#include <memory>
#include <string>
#include <vector>

#include "orlu/Task.h"

/// A service's command line: takes what engineers type at the product's consoles, any number of
/// them, one command after the other. Listens under its own name in the IPC directory.
class CLIClient {
public:
    struct CLICmdDescriptor {
        std::string command;  ///< Words with one blank between them.
        std::string help;     ///< May have several lines.
        std::string heading;  ///< What a console puts before the help.
    };
    using Descriptors = std::vector<std::shared_ptr<CLICmdDescriptor>>;

    /// Gets a command, the words behind it, any bytes, and fills the response. Returns 0 for a
    /// command that it does not know. May block: other consoles wait meanwhile.
    using Handler =
        std::function<int(const std::string& command, const std::list<std::string>& arguments,
                          std::string& response)>;

    explicit CLIClient(std::string name);
    /// The task must have stopped.
    ~CLIClient();
    CLIClient(const CLIClient&) = delete;
    CLIClient& operator=(const CLIClient&) = delete;

    /// Any thread, once; the work is done on `task`, on which `handler` is called. A place that
    /// can't be listened at costs a log line. Of a line's first words the longest command counts
    /// that is one of `descriptors`; where none is, the whole line is handed on as a command
    /// without arguments. A line over `Limits::kConsoleLineBytes` or `kConsoleWords` is refused
    /// unseen.
    void Initialize(NotifyTargetTaskIF* task, Descriptors descriptors, Handler handler);

private:
    class Server;
    std::shared_ptr<Server> m_server;
};
