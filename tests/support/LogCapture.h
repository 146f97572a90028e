// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>
#include <string_view>
#include <utility>

#include "orlu/DPrint.h"

/// Captures the log while it exists, a line "<level> <text>" for each line of the wanted loggers.
/// One at a time. It must be a fixture's first member to capture the log of the others.
class LogCapture {
public:
    using Wanted = bool (*)(std::string_view logger);
    enum class Names { Without, With };

    /// Without `wanted` all loggers are; with names the lines are "<level> <logger>: <text>".
    explicit LogCapture(Wanted wanted = nullptr, Names names = Names::Without)
    {
        s_lines.clear();
        s_wanted = wanted;
        s_names = names;
        DPrint::SetSink([](int level, std::string_view logger, std::string_view text) {
            if (s_wanted == nullptr || s_wanted(logger)) {
                s_lines += std::to_string(level) + " ";
                s_lines += s_names == Names::With ? std::string(logger) + ": " : "";
                s_lines += std::string(text) + "\n";
            }
        });
    }
    ~LogCapture() { DPrint::SetSink(nullptr); }
    LogCapture(const LogCapture&) = delete;
    LogCapture& operator=(const LogCapture&) = delete;

    /// The lines since the last `Take`.
    const std::string& Lines() const { return s_lines; }
    std::string Take() { return std::exchange(s_lines, {}); }

private:
    static inline std::string s_lines;
    static inline Wanted s_wanted = nullptr;
    static inline Names s_names = Names::Without;
};
