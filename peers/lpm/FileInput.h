// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <optional>
#include <string>

namespace Lpm {

/// Reads a regular file of at most `Limits::kFileBytes` that the command line names. The path is
/// used as given, without `ORLU_ROOT`. Nothing, with the reason in `why`, on failure.
std::optional<std::string> ReadInputFile(const std::string& path, std::string& why);

}  // namespace Lpm
