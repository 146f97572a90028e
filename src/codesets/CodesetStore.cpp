// SPDX-License-Identifier: Apache-2.0

#include "ProtoBufs/CodesetConfig.pb.h"
#include "codesets/CodesetLog.h"
#include "codesets/Trellan_ServiceCodesetHandler.h"
#include "orlu/ProtoToMarkup.h"
#include "orlu/SystemUtils.h"

namespace TrellanService {

namespace {

constexpr const char* kConfigDirectory = "/mnt/nv/product-persistence/";
constexpr const char* kConfigFile = "TRSCodesetConfig.json";

void ReadDetails(const CodesetConfig::CodesetDetails& details, CodesetEntry& entry)
{
    entry.devNum = details.devnum();
    entry.ambiguousKeyBitMap = details.ambiguouskeybitmap();
    entry.checksum = details.checksum();
    entry.safeToBlast = details.safetoblast();
    entry.ueiKeys.clear();
    for (const std::uint32_t key : details.keymap().keys()) {
        entry.ueiKeys.push_back(static_cast<std::uint8_t>(key));
    }
}

void WriteDetails(const CodesetEntry& entry, CodesetConfig::CodesetDetails& details)
{
    details.set_devnum(entry.devNum);
    details.set_ambiguouskeybitmap(entry.ambiguousKeyBitMap);
    details.set_checksum(entry.checksum);
    details.set_safetoblast(entry.safeToBlast);
    // Set even if there are no keys: `ReadEntries` refuses the whole file if one element lacks it.
    CodesetConfig::CodesetKeys& keyMap = *details.mutable_keymap();
    for (const std::uint8_t key : entry.ueiKeys) {
        keyMap.add_keys(key);
    }
}

}  // namespace

std::string Trellan_ServiceCodesetHandler::ConfigPath()
{
    return std::string(kConfigDirectory) + kConfigFile;
}

void Trellan_ServiceCodesetHandler::InitCodesetMap()
{
    const std::string path = ConfigPath();
    kCodesetLog.Log(3, "CodesetConfig file is {}", path);
    // Set even if reading fails. Later lists must not read the file again: the map then knows more.
    m_initialized = true;
    const auto text = SystemUtils::ReadFile(path);
    if (!text || !ReadEntries(*text)) {
        // No entry is kept of a file that is damaged in parts: a sync loads the blaster anew.
        m_codesets.clear();
    }
}

bool Trellan_ServiceCodesetHandler::ReadEntries(const std::string& text)
{
    CodesetConfig::CodesetConfig config;
    try {
        ProtoToMarkup::FromJson(text, config);
    } catch (const ProtoToMarkup::MarkupError& error) {
        kCodesetLog.Log(1, "codeset config file from disk failed markup error - {}", error.what());
        return false;
    }
    for (const CodesetConfig::CodesetEntry& element : config.codesets()) {
        if (!element.has_details()) {
            continue;
        }
        if (!element.details().has_keymap()) {
            return false;
        }
        ReadDetails(element.details(), m_codesets[element.name()]);
    }
    return true;
}

void Trellan_ServiceCodesetHandler::StoreCodesetConfig()
{
    CodesetConfig::CodesetConfig config;
    for (const auto& [name, entry] : m_codesets) {
        CodesetConfig::CodesetEntry& element = *config.add_codesets();
        element.set_name(name);
        WriteDetails(entry, *element.mutable_details());
    }
    try {
        const std::string text = ProtoToMarkup::ToJson(config, true, false, false);
        // `WriteFile` waits for the disk twice, and a key may have been held since before the sync.
        m_sync.EndBurst();
        SystemUtils::WriteFile(text.data(), text.data() + text.size(), ConfigPath());
    } catch (const ProtoToMarkup::MarkupError& error) {
        kCodesetLog.Prefix("StoreCodesetConfig")
            .Log(1, "codesetCfg write file markup error - {}", error.what());
    }
}

}  // namespace TrellanService
