// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "lpm/BlasterProtocol.h"

namespace Lpm {

class Blaster;

/// The number of a code set name such as T2051: a letter for the device class and digits. Nothing
/// for a text that is none, or for a number that its class does not have.
std::optional<DeviceNumber> DeviceNumberOf(std::string_view name);

/// Stores each file `<code set name>.bin` of the folder in the blaster; one that is no code set is
/// logged and left out, other files are not looked at. False, with the reason in `why`, if there is
/// no such folder.
bool LoadCodesets(const std::string& folder, Blaster& blaster, std::string& why);

}  // namespace Lpm
