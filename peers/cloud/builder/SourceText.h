// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>
#include <string_view>

#include "cloud/builder/Collection.h"

namespace Cloud {

/// Adds the content of a source to the collection:
///
///     {"source": "whose", "licence": "SPDX name", "version": "text", "quota": 1000,
///      "codesets": [{"name": "T2051", "type": "TV", "file": "T2051.json"},
///                   {"name": "T3000", "type": "TV", "groups": [...]}],
///      "brands": [{"type": "TV", "name": "Aurora", "guided": true,
///                  "models": [{"name": "AU-100", "codesets": ["T2051", {"groups": [...]}]}],
///                  "codesets": ["T3000"]}],
///      "cec": [{"vendor": "0x00e091", "osd": "", "role": "tv", "type": "TV", "brand": "Aurora",
///               "codeset": "T2051"}],
///      "edid": [{"manufacturer": "AUR", "monitor": "", "type": "TV", "brand": "Aurora"}]}
///
/// `groups` and the files (in `folder`) are texts of code sets. Lists may be absent, and so may
/// `version`, `quota`, `guided` and a device's `osd`, `role`, `monitor` and `codeset`. Later
/// sources can use a code set's name. False, and the reason in one line in `why`, on failure: the
/// collection must not be used then.
bool AddSource(std::string_view text, const std::string& folder, Collection& collection,
               std::string& why);

}  // namespace Cloud
