// SPDX-License-Identifier: Apache-2.0

#include <algorithm>
#include <array>
#include <optional>
#include <span>

#include "codesets/CodesetLog.h"
#include "codesets/Trellan_ServiceCodesetHandler.h"

namespace TrellanService {

namespace {

struct DeviceClass {
    char letter;
    std::uint16_t highBits;
};

// Some classes share their high bits; a device number does not tell these apart.
constexpr std::array<DeviceClass, 11> kLowerTable = {{{'T', 0x0000},
                                                      {'C', 0x1000},
                                                      {'N', 0x2000},
                                                      {'S', 0x3000},
                                                      {'V', 0x4000},
                                                      {'Y', 0x6000},
                                                      {'R', 0x7000},
                                                      {'M', 0x7000},
                                                      {'A', 0x8000},
                                                      {'D', 0x9000},
                                                      {'H', 0xA000}}};
constexpr std::array<DeviceClass, 10> kUpperTable = {{{'T', 0xB000},
                                                      {'C', 0xC000},
                                                      {'N', 0xD000},
                                                      {'S', 0xE000},
                                                      {'V', 0x5000},
                                                      {'Y', 0x5000},
                                                      {'R', 0xF000},
                                                      {'M', 0xF000},
                                                      {'A', 0xF000},
                                                      {'D', 0xF000}}};
// Numbers from here on take the upper table. Class H has no row there and is refused.
constexpr std::uint16_t kFirstUpper = 4096;

// The low 16 bits of a decimal number of any length; nothing if the text is not one.
std::optional<std::uint16_t> LowBitsOfDecimal(std::string_view digits)
{
    if (digits.empty()) {
        return std::nullopt;
    }
    std::uint32_t number = 0;
    for (const char digit : digits) {
        if (digit < '0' || digit > '9') {
            return std::nullopt;
        }
        // Masked at each step, so that a text of any length cannot overflow.
        number = (number * 10 + static_cast<std::uint32_t>(digit - '0')) & 0xFFFF;
    }
    return static_cast<std::uint16_t>(number);
}

std::optional<std::uint16_t> HighBits(std::span<const DeviceClass> table, char letter)
{
    const auto row = std::ranges::find(table, letter, &DeviceClass::letter);
    return row == table.end() ? std::nullopt : std::optional(row->highBits);
}

}  // namespace

bool Trellan_ServiceCodesetHandler::devStringTodevNum(const std::string& name,
                                                      std::uint16_t& devNum)
{
    const bool hasClass = !name.empty() && name[0] >= 'A' && name[0] <= 'Z';
    const auto number =
        hasClass ? LowBitsOfDecimal(std::string_view(name).substr(1)) : std::nullopt;
    if (!number) {
        kCodesetLog.Log(3, "TRS: Invalid codeset string {}", name);
        return false;
    }
    devNum = *number;
    const bool upper = *number >= kFirstUpper;
    const auto highBits = upper ? HighBits(kUpperTable, name[0]) : HighBits(kLowerTable, name[0]);
    if (!highBits) {
        kCodesetLog.Log(3, "TRS: Invalid codeset string {}passed in from KESTRA", name);
        return false;
    }
    devNum = static_cast<std::uint16_t>(*highBits | (upper ? *number - kFirstUpper : *number));
    kCodesetLog.Log(3, "TRS: Converted {} to 0x{:04x}", name, devNum);
    return true;
}

}  // namespace TrellanService
