// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace OrluConsole {

/// Splits a line into words at blanks and tabs. Text in "…" or '…' is taken literally, as a word or
/// as part of one. Nothing if a quote is not closed.
std::optional<std::vector<std::string>> SplitWords(std::string_view line);

/// Makes a service's text safe for a terminal. Line feeds and tabs stay; other control characters
/// and bytes that are not UTF-8 become text such as `\x1b`.
std::string Printable(std::string_view text);

}  // namespace OrluConsole
