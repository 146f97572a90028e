// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace OrluConsole {

/// The words of a line, with blanks and tabs between. What stands in "…" or '…' is taken as it is,
/// as part of a word or as one. Nothing for a quote that does not end.
std::optional<std::vector<std::string>> SplitWords(std::string_view line);

/// A service's text as a terminal may show it: line feeds and tabs stay, other control characters
/// and bytes that are no UTF-8 come out as `\x1b`.
std::string Printable(std::string_view text);

}  // namespace OrluConsole
