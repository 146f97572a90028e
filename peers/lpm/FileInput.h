// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <optional>
#include <string>

namespace Lpm {

/// The whole of a regular file of at most `Limits::kFileBytes`, named on the command line: the path
/// is taken as it stands, whatever `ORLU_ROOT` says. Nothing, with the reason in `why`, otherwise.
std::optional<std::string> ReadInputFile(const std::string& path, std::string& why);

}  // namespace Lpm
