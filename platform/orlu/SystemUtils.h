// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <optional>
#include <string>
#include <string_view>

class DPrint;

/// Every absolute path here and in `DirUtils` is taken under `ORLU_ROOT`, if that is set.
namespace SystemUtils {

/// Holds the lock `/run/orlu/<process>.lock` for the life of the process. Another process that
/// holds it: a line at level 1, and this one exits with 1.
void ThereCanBeOnlyOne();

/// The whole of a regular file of at most `Limits::kFileBytes`; nothing, with a log line unless the
/// file is simply not there, for anything else. Never waits on what is no regular file.
std::optional<std::string> ReadFile(const std::string& path);

/// Replaces the file atomically, with mode 0600. False, with a log line at level 1, on any failure:
/// then the old file stands as it was and nothing is left beside it.
bool WriteFile(const char* begin, const char* end, const std::string& path);

/// `path` under `ORLU_ROOT`.
std::string RootedPath(std::string_view path);

}  // namespace SystemUtils

namespace DirUtils {

bool DoesFileExist(const std::string& path);

/// Removes a file; a failure is logged by `logger` at level 2.
bool Delete(const std::string& path, const DPrint& logger);

}  // namespace DirUtils

namespace StringUtils {

/// ASCII letters only.
std::string ToLower(std::string_view text);

/// Whether the text is well-formed UTF-8.
bool IsUtf8(std::string_view text);

}  // namespace StringUtils
