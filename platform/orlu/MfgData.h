// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <optional>
#include <string>

/// The manufacturing data of the product: `/opt/Orlu/etc/MfgData.json`, an object of strings, read
/// once, at the first `Get`. A file that is missing or damaged counts as empty.
class MfgData {
public:
    static std::optional<std::string> Get(const std::string& key);

    /// For tests: the next `Get` reads the file again.
    static void Reload();
};
