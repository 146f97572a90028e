// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>

#include <json/value.h>

#include "lpm/LpmServer.h"
#include "lpm/ReplyScript.h"

namespace Lpm {

/// What an operator or a test says while the program runs, one JSON object a line. A line that is
/// none, or has a bad or unknown member, is logged and does nothing.
///
///     {"cec": {"addr": 0, "data": [4, 130], "length": 2}}   IPC_CEC_MSG to all
///     {"event65541": "03000405"}                            an unasked key map to all
///     {"event83": "0100"}                                   an unasked result of a store to all
///     {"replies": [...]}                                    replaces the script
class InputLines {
public:
    /// Both must outlive it.
    InputLines(LpmServer& server, ReplyScript& script) : m_server(server), m_script(script) {}

    void HandleLine(const std::string& line);

private:
    bool Act(const Json::Value& line, std::string& why);

    LpmServer& m_server;
    ReplyScript& m_script;
};

}  // namespace Lpm
