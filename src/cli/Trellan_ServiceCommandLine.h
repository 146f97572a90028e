// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <functional>
#include <list>
#include <map>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "blaster/LpmClientIF.h"
#include "console/CLIClient.h"
#include "orlu/Callback.h"
#include "orlu/Task.h"

namespace TrellanService {

class Trellan_Server;
class Trellan_ServiceBlasterProxy;
class Trellan_ServiceCodesetHandler;
class Trellan_ServiceKeyHandler;
class Trellan_ServiceManager;
class UEIInterface;

/// What the commands call. All but `ServerTask` are used on the server task only.
class CommandLineNeighboursIF {
public:
    virtual ~CommandLineNeighboursIF() = default;
    virtual NotifyTargetTaskIF& ServerTask() = 0;
    virtual Trellan_ServiceKeyHandler& KeyHandler() = 0;
    virtual Trellan_ServiceCodesetHandler& CodesetHandler() = 0;
    virtual Trellan_ServiceBlasterProxy& BlasterProxy() = 0;
    virtual UEIInterface& Engine() = 0;
    virtual Trellan_ServiceManager& Manager() = 0;
};

/// The engineers' commands, docs/commands.md. They arrive on a task of its own, one at a time,
/// which waits for each answer without limit. What a command does runs on the server task. Single
/// instance, built on the first thread and started on the server task.
class Trellan_ServiceCommandLine {
public:
    using Arguments = std::list<std::string>;  ///< Without the command. Any bytes.
    using Answer = AsyncCallback<std::string>;

    static Trellan_ServiceCommandLine& GetInstance();

    /// What `GetInstance` logs before it returns this instance.
    void LogReturned() const;

    /// `neighbours` must outlive this object, and everything that holds its callbacks must be
    /// destroyed before it: its destructor waits for the command in progress, which ends when its
    /// callback is dropped.
    explicit Trellan_ServiceCommandLine(CommandLineNeighboursIF& neighbours);
    virtual ~Trellan_ServiceCommandLine();
    Trellan_ServiceCommandLine(const Trellan_ServiceCommandLine&) = delete;
    Trellan_ServiceCommandLine& operator=(const Trellan_ServiceCommandLine&) = delete;

    /// All commands, in the order in which consoles show them.
    static CLIClient::Descriptors DescribeCommands();

    /// Starts the command line. To be called once. The server is not owned.
    void Initialize(Trellan_Server* server);

private:
    /// A handler arranges that the callback is called once, and returns 1. It returns 0 if the
    /// server task has stopped; then no call comes. `response` is not touched.
    using Handler =
        std::function<int(const Arguments& arguments, const Answer& answer, std::string& response)>;

    struct CommandRow {
        const char* command;
        const char* help;
        int (Trellan_ServiceCommandLine::*handler)(const Arguments&, const Answer&, std::string&);
    };
    static std::span<const CommandRow> CommandTable();

    void InitializeCommandList();

    /// On the command line's task, blocking until the answer is there. 1, or 0 for a command that
    /// is unknown. A command that can get no answer any more, because the link to the LPM service
    /// was lost or the service ends, has failed.
    int HandleCommand(const std::string& command, const Arguments& arguments,
                      std::string& response);

    /// Runs `work` on the server task and waits for its end. Returns what a handler returns.
    int OnServerTask(std::function<void()> work);

    int HandleSendKey(const Arguments& arguments, const Answer& answer, std::string& response);
    int HandleEndKey(const Arguments& arguments, const Answer& answer, std::string& response);
    int HandleKeyDelay(const Arguments& arguments, const Answer& answer, std::string& response);
    int HandleAllowContinuous(const Arguments& arguments, const Answer& answer,
                              std::string& response);
    int HandleGetHistory(const Arguments& arguments, const Answer& answer, std::string& response);
    int HandleClearHistory(const Arguments& arguments, const Answer& answer, std::string& response);

    int HandleGetKeyMap(const Arguments& arguments, const Answer& answer, std::string& response);
    int HandleDeleteCodeset(const Arguments& arguments, const Answer& answer,
                            std::string& response);
    int HandleListCodesets(const Arguments& arguments, const Answer& answer, std::string& response);
    int HandleMasterReset(const Arguments& arguments, const Answer& answer, std::string& response);
    int HandleStoreCodeset(const Arguments& arguments, const Answer& answer, std::string& response);
    int HandleLoadCodeset(const Arguments& arguments, const Answer& answer, std::string& response);

    int HandleGetSrcCfg(const Arguments& arguments, const Answer& answer, std::string& response);
    int HandleGetSrcList(const Arguments& arguments, const Answer& answer, std::string& response);
    int HandleWhitelistVer(const Arguments& arguments, const Answer& answer, std::string& response);

    int HandleGetVersion(const Arguments& arguments, const Answer& answer, std::string& response);
    int HandleGetDbVer(const Arguments& arguments, const Answer& answer, std::string& response);
    int HandleFindCECDev(const Arguments& arguments, const Answer& answer, std::string& response);
    int HandleFindEDIDDev(const Arguments& arguments, const Answer& answer, std::string& response);

    /// The code set name in the first argument. If there is none, answers and returns an empty
    /// name.
    std::string CodesetName(const Arguments& arguments, const Answer& answer);

    [[maybe_unused]] Trellan_Server* m_server = nullptr;
    std::unique_ptr<CLIClient> m_cliClient;
    std::shared_ptr<LpmClientIF> m_lpmClient;
    std::shared_ptr<NotifyTargetTaskIF> m_task;
    CLIClient::Descriptors m_descriptors;
    std::map<std::string, Handler> m_handlers;
    CommandLineNeighboursIF& m_neighbours;
};

}  // namespace TrellanService
