// SPDX-License-Identifier: Apache-2.0

#include "ProtoBufs/Sources.pb.h"
#include "cli/Awaited.h"
#include "cli/CommandLog.h"
#include "cli/Trellan_ServiceCommandLine.h"
#include "codesets/Trellan_ServiceCodesetHandler.h"
#include "endpoints/Trellan_ServiceManager.h"

namespace TrellanService {

namespace {

constexpr const char* kVersion = "3.1.72";
constexpr const char* kSourcesPath = "/system/sources";
constexpr double kApiVersion = 1.0;
constexpr std::size_t kKeysOnALine = 10;

std::string KeysText(const std::vector<std::uint8_t>& keys)
{
    std::string text;
    std::size_t written = 0;
    for (const std::uint8_t key : keys) {
        text += fmt::format("0x{:02x} ", key);
        if (++written % kKeysOnALine == 0) {
            text += "\n\t\t";
        }
    }
    return text;
}

std::string CodesetsText(const CodesetMap& codesets)
{
    if (codesets.empty()) {
        return "No codesets stored with system source list";
    }
    std::string text;
    for (const auto& [name, entry] : codesets) {
        text += fmt::format(
            "============\nciCode: {}\n\tdevNum: 0x{:04x}\n\tambiguousKeyMap: 0x{:016x}\n"
            "\tchecksum: 0x{}\n\tsafe to blast?: {}\n\tkey map: {}\n",
            name, entry.devNum, entry.ambiguousKeyBitMap, entry.checksum, entry.safeToBlast,
            KeysText(entry.ueiKeys));
    }
    return text;
}

std::string SourcesText(const KESTRAAPI::Sources& sources)
{
    std::string text = "Source List\n";
    for (int number = 0; number < sources.sources_size(); ++number) {
        const KESTRAAPI::SourceItem& source = sources.sources(number);
        if (!source.has_details()) {
            continue;
        }
        const KESTRAAPI::Details& details = source.details();
        text += fmt::format(
            "============\nSource {}\n\tciCode: {}\n\tdeviceType: {}\n\tactivationKey: {}\n"
            "\tsourceName: {}\n\tsourceAccountName: {}\n",
            number, details.cicode(), details.devicetype(), details.activationkey(),
            source.sourcename(), source.sourceaccountname());
    }
    return text;
}

}  // namespace

int Trellan_ServiceCommandLine::HandleGetVersion(const Arguments& /*arguments*/,
                                                 const Answer& answer, std::string& /*response*/)
{
    answer(kVersion);
    return 1;
}

int Trellan_ServiceCommandLine::HandleGetDbVer(const Arguments& /*arguments*/, const Answer& answer,
                                               std::string& /*response*/)
{
    return OnServerTask([this, &answer] { m_neighbours.Manager().GetTRDatabaseVer(answer); });
}

int Trellan_ServiceCommandLine::HandleWhitelistVer(const Arguments& /*arguments*/,
                                                   const Answer& answer, std::string& /*response*/)
{
    return OnServerTask([this, &answer] {
        answer("Whitelist version " + m_neighbours.CodesetHandler().GetWhiteListVersion());
    });
}

int Trellan_ServiceCommandLine::HandleGetSrcCfg(const Arguments& /*arguments*/,
                                                const Answer& answer, std::string& /*response*/)
{
    // A copy, because the map belongs to the server task.
    CodesetMap codesets;
    if (OnServerTask(
            [this, &codesets] { codesets = m_neighbours.CodesetHandler().GetCodesets(); }) == 0) {
        return 0;
    }
    answer(CodesetsText(codesets));
    return 1;
}

int Trellan_ServiceCommandLine::HandleGetSrcList(const Arguments& /*arguments*/,
                                                 const Answer& answer, std::string& /*response*/)
{
    // Both callbacks share one sender: the wait also ends if the client drops both.
    const Awaited<std::string> list;
    const int asked = OnServerTask([this, sender = list.MakeSender()] {
        NotifyTargetTaskIF* task = &m_neighbours.ServerTask();
        const AsyncCallback<KESTRAAPI::Sources> success(
            [sender](const KESTRAAPI::Sources& sources) { sender->Give(SourcesText(sources)); },
            task);
        const AsyncCallback<Portico::Error> failure(
            [sender](const Portico::Error& /*error*/) {
                sender->Give("Error getting /system/sources\n");
            },
            task);
        m_neighbours.Manager().GetPorticoClient()->SendGet<KESTRAAPI::Sources>(
            kSourcesPath, success, failure, kApiVersion);
    });
    if (asked == 0) {
        return 0;
    }
    answer(list.Wait().value_or("Unknown error\n"));
    return 1;
}

}  // namespace TrellanService
