// SPDX-License-Identifier: Apache-2.0

#include "cli/Trellan_ServiceCommandLine.h"

namespace TrellanService {

std::span<const Trellan_ServiceCommandLine::CommandRow> Trellan_ServiceCommandLine::CommandTable()
{
    using Self = Trellan_ServiceCommandLine;
    static constexpr CommandRow kCommands[] = {
        {"trs send_key",
         "Send IR or CEC Orlu key\n"
         "\t\t   trs send_key <key> <ciCode> <single key>\n"
         "\t\t      key = Orlu key value\n"
         "\t\t      codeset = ciCode name (ex. T2051), optional if no ciCode, CEC key sent\n"
         "\t\t      single key = 1 if present send single IR key, otherwise continuous IR",
         &Self::HandleSendKey},
        {"trs end_key",
         "Send IR or CEC release key\n"
         "\t\t    trs end_key <ciCode>\n"
         "\t\t        codeset = ciCode name (ex. T2051), optional if no ciCode, CEC release "
         "sent",
         &Self::HandleEndKey},
        {"trs get_keymap",
         "Get list of keys for specified ciCode\n"
         "\t\t    trs get_keymap <ciCode>\n"
         "\t\t        ciCode = ciCode name (ex. T2051)",
         &Self::HandleGetKeyMap},
        {"trs get_version", "Reports the version of TrellanService", &Self::HandleGetVersion},
        {"trs delete_codeset",
         "Deletes a ciCode from the blaster\n"
         "\t\t    trs delete_ciCode <ciCode>\n"
         "\t\t        ciCode = ciCode name (ex. T2051)",
         &Self::HandleDeleteCodeset},
        {"trs list_codesets", "Reports the ciCode (in device number format) stored in the blaster",
         &Self::HandleListCodesets},
        {"trs store_codeset",
         "Downloads test ciCode T2051 to the blaster\n"
         "\t\t    trs store_ciCode T2051",
         &Self::HandleStoreCodeset},
        {"trs get_db_ver", "Reports the version of the online UEI database", &Self::HandleGetDbVer},
        {"trs get_src_cfg",
         "This command reports the ciCode string, dev number, and ambiguous key map for all "
         "configured sources",
         &Self::HandleGetSrcCfg},
        {"trs get_src_list",
         "This command reports interesting TRS-related information from /system/sources",
         &Self::HandleGetSrcList},
        {"trs key_delay",
         "This command reports the current gets/sets value of the delay between repeated "
         "key presses.",
         &Self::HandleKeyDelay},
        {"trs load_codeset", "This command loads the specified codeset.", &Self::HandleLoadCodeset},
        {"trs master_reset", "This command performas a master reset of the blaster.",
         &Self::HandleMasterReset},
        {"trs allow_continuous",
         "This command enable/disables continuous key blasting (non-zero to enable, 0 to "
         "disable, no arguments to get current state).",
         &Self::HandleAllowContinuous},
        {"trs whitelist_ver",
         "This command returns the version of the codeset whitelist installed on the system.",
         &Self::HandleWhitelistVer},
        {"trs find_cec_dev",
         "Finds device type, brand, and codeset from logical address, vendor id, and OSD.",
         &Self::HandleFindCECDev},
        {"trs find_edid_dev", "Finds device type, brand, and codeset from TV EDID.",
         &Self::HandleFindEDIDDev},
        {"trs get_history", "Reports the last key commands sent to the blaster",
         &Self::HandleGetHistory},
        {"trs clear_history", "Clears the IR Blaster History", &Self::HandleClearHistory},
    };
    return kCommands;
}

CLIClient::Descriptors Trellan_ServiceCommandLine::DescribeCommands()
{
    CLIClient::Descriptors descriptors;
    for (const CommandRow& row : CommandTable()) {
        const std::string command = row.command;
        descriptors.push_back(std::make_shared<CLIClient::CLICmdDescriptor>(
            CLIClient::CLICmdDescriptor{command, row.help, command + "\n\t\t"}));
    }
    return descriptors;
}

}  // namespace TrellanService
