// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>

#include "cloud/builder/Collection.h"

namespace Cloud {

/// Names the code sets and writes all to a file, which is replaced as a whole; the same collection
/// gives the same bytes. False, and the reason in `why`: nothing is left behind.
bool WriteCatalogue(Collection& collection, const std::string& path, std::string& why);

}  // namespace Cloud
