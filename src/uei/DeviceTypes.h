// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <algorithm>
#include <array>
#include <string_view>

namespace TrellanService {

struct DeviceTypeRow {
    std::string_view product;
    const char* uei;
};

/// The product's device types, by their exact names, and the library's.
inline constexpr std::array<DeviceTypeRow, 6> deviceTypeMap = {{{"DEVICE_TYPE_TV", "TV"},
                                                                {"DEVICE_TYPE_SMART_TV", "TV"},
                                                                {"DEVICE_TYPE_GAME", "STB"},
                                                                {"DEVICE_TYPE_CBL_SAT", "STB"},
                                                                {"DEVICE_TYPE_STREAMING", "OTT"},
                                                                {"DEVICE_TYPE_BD_DVD", "DVD"}}};

/// Null for a type that is not in the map.
constexpr const char* UEIDeviceType(std::string_view product)
{
    const auto* row = std::ranges::find(deviceTypeMap, product, &DeviceTypeRow::product);
    return row == deviceTypeMap.end() ? nullptr : row->uei;
}

}  // namespace TrellanService
