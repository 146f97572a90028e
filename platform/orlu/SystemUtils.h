// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <optional>
#include <string>
#include <string_view>

class DPrint;

/// `ORLU_ROOT`, if set, is put before every absolute path here and in `DirUtils`.
namespace SystemUtils {

/// Takes the lock `/run/orlu/<process>.lock` for the life of the process. If it cannot be taken,
/// because another process holds it or for any other reason, logs a line at level 1 and exits with
/// 1.
void ThereCanBeOnlyOne();

/// The content of a regular file of at most `Limits::kFileBytes`. Nothing for anything else, with a
/// log line unless the file does not exist. Never blocks on something that is not a regular file.
std::optional<std::string> ReadFile(const std::string& path);

/// Replaces the file atomically, with mode 0600. False, with a log line at level 1, on any failure;
/// then the old file is unchanged and no other file is left, except if only the sync of the folder
/// failed: then the new file is in place.
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
