// SPDX-License-Identifier: Apache-2.0

#include <algorithm>
#include <unordered_map>

#include "ProtoBufs/WhiteList.pb.h"
#include "codesets/CodesetLog.h"
#include "codesets/Trellan_ServiceCodesetHandler.h"
#include "orlu/ProtoToMarkup.h"
#include "orlu/SystemUtils.h"

namespace TrellanService {

namespace {

constexpr const char* kWhiteListDirectory = "/opt/Orlu/etc/UEI/";
constexpr const char* kWhiteListFile = "WhiteList.json";

using Approved = std::unordered_map<std::string_view, const WhiteList::ciCodeEntry*>;

// False if there is a file and it is not a whitelist. Without a file the list is empty.
bool ReadWhiteList(const std::string& path, WhiteList::WhiteList& list)
{
    const auto text = SystemUtils::ReadFile(path);
    if (!text) {
        kCodesetLog.Log(1, "Failed to load whitelist file {}", path);
        return true;
    }
    try {
        ProtoToMarkup::FromJson(*text, list);
    } catch (const ProtoToMarkup::MarkupError& error) {
        kCodesetLog.Log(1, "White list file from disk failed markup error - {}", error.what());
        return false;
    }
    return true;
}

bool IsSafe(const std::string& name, const std::string& checksum, const Approved& approved)
{
    const auto found = approved.find(name);
    if (found == approved.end()) {
        kCodesetLog.Log(3, "Codeset {} NOT in whiteList", name);
        return false;
    }
    const auto& checksums = found->second->checksum();
    if (std::ranges::find(checksums, checksum) == checksums.end()) {
        kCodesetLog.Log(3, "Codeset {} in whiteList but checksum {} isn't", name, checksum);
        return false;
    }
    kCodesetLog.Log(3, "Codeset {} in whiteList AND checksum okay, enabling continuous blasting",
                    name);
    return true;
}

}  // namespace

void Trellan_ServiceCodesetHandler::AddWhiteListStatus()
{
    const std::string path = std::string(kWhiteListDirectory) + kWhiteListFile;
    kCodesetLog.Log(3, "WhiteList file is {}", path);
    WhiteList::WhiteList list;
    if (!ReadWhiteList(path, list)) {
        return;
    }
    // Rendering the list is skipped where the line would not be written.
    if (DPrint::IsLog(3)) {
        kCodesetLog.Log(3, "White list file successfully{}",
                        ProtoToMarkup::ToJson(list, true, false, false));
    }
    m_whiteListVersion = list.version();
    Approved approved;
    for (const WhiteList::ciCodeEntry& element : list.cicodes()) {
        approved.emplace(element.name(), &element);  // the first of several with one name counts
    }
    for (auto& [name, entry] : m_codesets) {
        // Every entry is set, so that a code set that left the whitelist loses its permission.
        entry.safeToBlast = IsSafe(name, entry.checksum, approved);
    }
}

}  // namespace TrellanService
