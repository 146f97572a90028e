// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>

#include "cloud/builder/Collection.h"

namespace Cloud {

/// Names the code sets and writes the collection to a file, which is replaced atomically. The same
/// collection gives the same bytes. False, and the reason in `why`, on failure: the old file is
/// unchanged, and no temporary file remains.
bool WriteCatalogue(Collection& collection, const std::string& path, std::string& why);

}  // namespace Cloud
