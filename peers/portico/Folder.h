// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>
#include <optional>
#include <string>

namespace PorticoApi {

/// Reads the regular file `path` below `folder`. Symbolic links are followed in the path of
/// `folder`, but not below it. Nothing for anything but a regular file, for an empty component or
/// one that begins with ".", and for more than `limit` bytes. Does not block.
std::optional<std::string> ReadFileBelow(const std::string& folder, const std::string& path,
                                         std::size_t limit);

}  // namespace PorticoApi
