// SPDX-License-Identifier: Apache-2.0

#include "lpm/InputLines.h"

#include <limits>
#include <optional>
#include <utility>

#include "lpm/JsonInput.h"
#include "orlu/DPrint.h"

namespace Lpm {

using namespace LpmServiceMessages;

namespace {

constexpr DPrint kLog("InputLines");
constexpr std::int64_t kMaximumUnsigned = std::numeric_limits<std::uint32_t>::max();

std::optional<IpcCecMessage_t> ParseCec(const Json::Value& value, std::string& why)
{
    if (!HasOnly(value, {"addr", "data", "length"}, why)) {
        return std::nullopt;
    }
    // `length` may differ from the number of bytes, so that a test can send a wrong length.
    JsonMembers members(value);
    IpcCecMessage_t message;
    if (const auto address = members.Integer("addr", 0, kMaximumUnsigned)) {
        message.set_addr(static_cast<std::uint32_t>(*address));
    }
    if (const Json::Value* data = members.Array("data")) {
        for (const Json::Value& byte : *data) {
            if (!byte.isUInt() || byte.asUInt() > 255) {
                why = "\"data\" holds more than bytes";
                return std::nullopt;
            }
            message.add_data(byte.asUInt());
        }
    }
    if (const auto length = members.Integer("length", 0, kMaximumUnsigned)) {
        message.set_length(static_cast<std::uint32_t>(*length));
    }
    why = members.Why();
    return why.empty() ? std::optional(message) : std::nullopt;
}

}  // namespace

void InputLines::HandleLine(const std::string& line)
{
    std::string why;
    const auto value = ParseJson(line, why);
    if (!value || !Act(*value, why)) {
        kLog.Log(2, "A line of input is not understood: {}", why);
    }
}

bool InputLines::Act(const Json::Value& line, std::string& why)
{
    if (!HasOnly(line, {"cec", "event65541", "event83", "replies"}, why)) {
        return false;
    }
    JsonMembers members(line);
    const auto keyMap = members.Hex("event65541");
    const auto stored = members.Hex("event83");
    std::optional<IpcCecMessage_t> cec;
    if (line.isMember("cec") && !(cec = ParseCec(line["cec"], why))) {
        return false;
    }
    why = members.Why();
    if (!why.empty() || (line.isMember("replies") && !m_script.Replace(line["replies"], why))) {
        return false;
    }
    // All members are valid from here on: a line takes effect as a whole or not at all.
    if (cec) {
        m_server.SendToAll(IPC_CEC_MSG, *cec);
    }
    if (keyMap) {
        BulkTransferData data;
        data.set_type(BULK_TYPE_BLASTER_KEY_MAP);
        data.set_data(*keyMap);
        m_server.SendToAll(BLASTER_KEY_MAP_RESP, data);
    }
    if (stored) {
        TRS_BlasterMsg_t message;
        message.set_blaster_msg(*stored);
        m_server.SendToAll(IPC_BULK_BLASTER_DONE, message);
    }
    return true;
}

}  // namespace Lpm
