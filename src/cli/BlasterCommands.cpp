// SPDX-License-Identifier: Apache-2.0

#include "blaster/BlasterFrames.h"
#include "blaster/Trellan_ServiceBlasterProxy.h"
#include "cli/CommandLog.h"
#include "cli/Trellan_ServiceCommandLine.h"
#include "uei/UEIInterface.h"

namespace TrellanService {

using namespace BlasterFrames;  // NOLINT(google-build-using-namespace)

namespace {

std::string KeyMapText(const std::string& name, const std::string& reply)
{
    if (Status(reply) != 0) {
        return fmt::format("Unable to retrieve codeset {}, error code 0x{:02x}", name,
                           Status(reply));
    }
    std::string text = "Codeset " + name + " key map\n";
    for (const std::uint8_t key : KeysOf(reply)) {
        text += fmt::format("{:02x} ", key);
    }
    return text;
}

std::string DeletionText(const std::string& name, const std::string& reply)
{
    if (Status(reply) != 0) {
        return fmt::format("Deleting codeset {} error, code 0x{:02x}", name, Status(reply));
    }
    return fmt::format("Codeset {} deleted successfully: code 0x{:02x}", name, Status(reply));
}

std::string ListText(const std::string& reply)
{
    std::string text;
    for (const std::uint16_t device : DevicesOf(reply)) {
        text += fmt::format("0x{:04x} ", device);
    }
    return text.empty() ? "No codesets loaded in blaster" : text;
}

}  // namespace

std::string Trellan_ServiceCommandLine::CodesetName(const Arguments& arguments,
                                                    const Answer& answer)
{
    const char* complaint = "NOT ENOUGH ARGS";
    if (!arguments.empty()) {
        const std::string valid =
            m_neighbours.Engine().ValidateCodesetName(arguments.front().c_str());
        if (!valid.empty()) {
            // A short name is filled with zeros, which `c_str` drops.
            return valid.c_str();  // NOLINT(readability-redundant-string-cstr)
        }
        complaint = "INVALID CODESET NAME";
    }
    kCommandLog.Log(3, "Response: {}", complaint);
    answer(complaint);
    return {};
}

int Trellan_ServiceCommandLine::HandleGetKeyMap(const Arguments& arguments, const Answer& answer,
                                                std::string& /*response*/)
{
    return OnServerTask([this, &arguments, &answer] {
        const std::string name = CodesetName(arguments, answer);
        if (name.empty()) {
            return;
        }
        m_neighbours.BlasterProxy().GetBlasterKeyMap(
            name,
            Answer([name, answer](const std::string& reply) { answer(KeyMapText(name, reply)); },
                   &m_neighbours.ServerTask()));
    });
}

int Trellan_ServiceCommandLine::HandleDeleteCodeset(const Arguments& arguments,
                                                    const Answer& answer, std::string& /*response*/)
{
    return OnServerTask([this, &arguments, &answer] {
        const std::string name = CodesetName(arguments, answer);
        if (name.empty()) {
            return;
        }
        m_neighbours.BlasterProxy().DeleteCodesetFromBlaster(
            name,
            Answer([name, answer](const std::string& reply) { answer(DeletionText(name, reply)); },
                   &m_neighbours.ServerTask()));
    });
}

int Trellan_ServiceCommandLine::HandleListCodesets(const Arguments& /*arguments*/,
                                                   const Answer& answer, std::string& /*response*/)
{
    return OnServerTask([this, &answer] {
        m_neighbours.BlasterProxy().ListBlasterCodesets(
            Answer([answer](const std::string& reply) { answer(ListText(reply)); },
                   &m_neighbours.ServerTask()));
    });
}

int Trellan_ServiceCommandLine::HandleMasterReset(const Arguments& /*arguments*/,
                                                  const Answer& answer, std::string& /*response*/)
{
    return OnServerTask([this, &answer] {
        m_neighbours.BlasterProxy().ResetBlaster(
            Answer([answer](const std::string& /*reply*/) { answer("Reset complete"); },
                   &m_neighbours.ServerTask()));
    });
}

}  // namespace TrellanService
