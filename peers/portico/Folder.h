// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>
#include <optional>
#include <string>

namespace PorticoApi {

/// The regular file at `path`, words between single slashes, below `folder`, whose own path may
/// hold links; below it none is followed. Nothing for anything else, for a word that begins with
/// ".", and above `limit` bytes. Never waits.
std::optional<std::string> ReadFileBelow(const std::string& folder, const std::string& path,
                                         std::size_t limit);

}  // namespace PorticoApi
