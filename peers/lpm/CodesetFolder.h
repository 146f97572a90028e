// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "lpm/BlasterProtocol.h"

namespace Lpm {

class Blaster;

/// The device number of a code set name such as T2051: a letter for the device class and digits.
/// Nothing for any other text, or for a number that the class does not have.
std::optional<DeviceNumber> DeviceNumberOf(std::string_view name);

/// Stores each file `<code set name>.bin` of the folder in the blaster. A `.bin` file that is not a
/// code set is logged and skipped; other files are ignored. False, with the reason in `why`, if the
/// folder cannot be listed.
bool LoadCodesets(const std::string& folder, Blaster& blaster, std::string& why);

}  // namespace Lpm
