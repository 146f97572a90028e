// SPDX-License-Identifier: Apache-2.0

#include "lpm/CodesetFolder.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <filesystem>
#include <system_error>
#include <vector>

#include "lpm/Blaster.h"
#include "lpm/FileInput.h"
#include "orlu/DPrint.h"

namespace Lpm {

namespace {

constexpr DPrint kLog("CodesetFolder");

constexpr unsigned kRange = 4096;

struct DeviceClass {
    char letter;
    DeviceNumber lower;  ///< numbers below 4096
    DeviceNumber upper;  ///< numbers from 4096 on; 0: the class has none
};

/// Some classes share a range, R and M for example, as they do in the service.
constexpr std::array<DeviceClass, 11> kClasses{{
    {'A', 0x8000, 0xF000},
    {'C', 0x1000, 0xC000},
    {'D', 0x9000, 0xF000},
    {'H', 0xA000, 0},
    {'M', 0x7000, 0xF000},
    {'N', 0x2000, 0xD000},
    {'R', 0x7000, 0xF000},
    {'S', 0x3000, 0xE000},
    {'T', 0x0000, 0xB000},
    {'V', 0x4000, 0x5000},
    {'Y', 0x6000, 0x5000},
}};

void LoadCodeset(const std::filesystem::path& path, Blaster& blaster)
{
    std::string why;
    const auto device = DeviceNumberOf(path.stem().string());
    if (!device) {
        kLog.Log(2, "{} is not named for a code set", path.string());
        return;
    }
    const auto data = ReadInputFile(path.string(), why);
    if (!data || blaster.Store(*device, AsBytes(*data), why) != Status::kOk) {
        kLog.Log(2, "{} is no code set: {}", path.string(), why);
        return;
    }
    kLog.Log(3, "Holding {} as 0x{:04x}", path.stem().string(), *device);
}

}  // namespace

std::optional<DeviceNumber> DeviceNumberOf(std::string_view name)
{
    const auto* row =
        std::ranges::find(kClasses, name.empty() ? '\0' : name[0], &DeviceClass::letter);
    if (row == kClasses.end()) {
        return std::nullopt;
    }
    unsigned number = 0;
    const char* end = name.data() + name.size();
    const auto [stop, error] = std::from_chars(name.data() + 1, end, number);
    if (error != std::errc{} || stop != end || number >= 2 * kRange) {
        return std::nullopt;
    }
    if (number < kRange) {
        return static_cast<DeviceNumber>(row->lower | number);
    }
    if (row->upper == 0) {
        return std::nullopt;
    }
    return static_cast<DeviceNumber>(row->upper | (number - kRange));
}

bool LoadCodesets(const std::string& folder, Blaster& blaster, std::string& why)
{
    std::error_code error;
    std::vector<std::filesystem::path> paths;
    for (std::filesystem::directory_iterator entry(folder, error), end; !error && entry != end;
         entry.increment(error)) {
        if (entry->path().extension() == ".bin") {
            paths.push_back(entry->path());
        }
    }
    if (error) {
        why = error.message();
        return false;
    }
    // The system lists a folder in no fixed order. The log and a refusal by a full blaster must not
    // depend on that order.
    std::ranges::sort(paths);
    for (const auto& path : paths) {
        LoadCodeset(path, blaster);
    }
    return true;
}

}  // namespace Lpm
