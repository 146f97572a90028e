// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>
#include <string_view>

namespace Orlu {

/// Appends the head of a line: `<UTC time> <level> <logger>: `, or `<<priority>><level> <logger>: `
/// where systemd reads it.
void AppendLogHead(std::string& line, int level, std::string_view logger);

/// Appends `text` and escapes what could forge or garble a line: line feeds and the like as `\n`,
/// other control characters and bytes that are not UTF-8 as `\x1b`.
void AppendEscaped(std::string& line, std::string_view text);

/// Writes the same head, at most `size` bytes, and gives their number. For a fault handler:
/// allocates nothing.
std::size_t WriteLogHead(char* buffer, std::size_t size, int level, std::string_view logger);

/// The lines that this thread has gathered and not written yet. For a fault handler; they may be
/// damaged if the fault came while a line was added.
std::string_view PendingLogLines();

}  // namespace Orlu
