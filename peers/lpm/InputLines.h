// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>

#include <json/value.h>

#include "lpm/LpmServer.h"
#include "lpm/ReplyScript.h"

namespace Lpm {

/// Executes what an operator or a test writes to standard input, one JSON object in each line. A
/// line that is not an object, or has a bad or unknown member, is logged and has no effect.
///
///     {"cec": {"addr": 0, "data": [4, 130], "length": 2}}   IPC_CEC_MSG to all clients
///     {"event65541": "03000405"}                            an unsolicited key map to all
///     {"event83": "0100"}                                   an unsolicited store result to all
///     {"replies": [...]}                                    replaces the script
class InputLines {
public:
    /// Both must outlive this object.
    InputLines(LpmServer& server, ReplyScript& script) : m_server(server), m_script(script) {}

    void HandleLine(const std::string& line);

private:
    bool Act(const Json::Value& line, std::string& why);

    LpmServer& m_server;
    ReplyScript& m_script;
};

}  // namespace Lpm
