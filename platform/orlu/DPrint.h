// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>
#include <string_view>

#include <fmt/format.h>

/// A named logger of one source unit. Any thread. A line is `<UTC time> <level> <logger>: <text>`
/// on standard error; where systemd reads it, `<priority>` takes the place of the time.
///
/// Levels: 1 failure, 2 warning, 3 information, 4 trace, 6 signatures. `ORLU_LOG_LEVEL` (default 3)
/// is the highest level that is written; a line above it costs one comparison. Control characters
/// in a text are escaped, so that a text cannot forge a line. The lines of a task are written
/// together at the end of its wake-up; a line of level 1 is written at once with all lines before
/// it.
class DPrint {
public:
    /// Cheap enough for a static object; `name` and `prefix` must live as long as the logger.
    explicit constexpr DPrint(const char* name, const char* prefix = "")
        : m_name(name), m_prefix(prefix)
    {
    }

    static bool IsLog(int level) { return level <= s_level; }

    /// The same logger with `prefix` and ": " in front of each text.
    constexpr DPrint Prefix(const char* prefix) const { return DPrint(m_name, prefix); }

    /// Formats only if the level is on.
    template <class... Args>
    void Log(int level, fmt::format_string<Args...> format, Args&&... args) const
    {
        if (IsLog(level)) {
            PutFormatted(level, format, fmt::make_format_args(args...));
        }
    }

    /// Writes a finished text, if the level is on.
    void Put(int level, std::string_view text) const;

    /// Writes the lines that this thread has gathered. For a wait in the middle of a wake-up.
    static void Flush();

    /// Reads `ORLU_LOG_LEVEL`; a value that is none of the levels leaves the default.
    static void ReadLevel();
    static void SetLevel(int level) { s_level = level; }

    /// For tests: takes each line, without time and line feed, in place of standard error.
    using Sink = void (*)(int level, std::string_view logger, std::string_view text);
    static void SetSink(Sink sink);

private:
    void PutFormatted(int level, fmt::string_view format, fmt::format_args args) const;

    static inline int s_level = 3;
    const char* m_name;
    const char* m_prefix;
};
