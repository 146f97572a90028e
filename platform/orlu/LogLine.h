// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>
#include <string_view>

namespace Orlu {

/// Appends what stands before a line's text: `<UTC time> <level> <logger>: `, or
/// `<<priority>><level> <logger>: ` where systemd reads it.
void AppendLogHead(std::string& line, int level, std::string_view logger);

/// Appends `text` with what could forge or garble a line escaped: line feeds and the like as `\n`,
/// other control characters and bytes that are no UTF-8 as `\x1b`.
void AppendEscaped(std::string& line, std::string_view text);

/// The same head without memory, for a fault: at most `size` bytes. Gives how many it wrote.
std::size_t WriteLogHead(char* buffer, std::size_t size, int level, std::string_view logger);

/// The lines that this thread has gathered and not written yet. For a fault; damaged, perhaps, if
/// it struck while a line was being added.
std::string_view PendingLogLines();

}  // namespace Orlu
