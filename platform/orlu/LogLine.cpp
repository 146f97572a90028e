// SPDX-License-Identifier: Apache-2.0

#include "orlu/LogLine.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <ctime>

#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include "orlu/Utf8.h"

namespace Orlu {

namespace {

/// systemd says in the environment which device and inode its log reads; a standard error that was
/// sent elsewhere afterwards is none of it.
bool IsReadBySystemd()
{
    const char* stream = std::getenv("JOURNAL_STREAM");
    struct stat status {};
    return stream && ::fstat(STDERR_FILENO, &status) == 0 &&
           fmt::format("{}:{}", status.st_dev, status.st_ino) == stream;
}

const bool g_readBySystemd = IsReadBySystemd();

int Priority(int level)
{
    switch (level) {
        case 1:
            return 3;
        case 2:
            return 4;
        case 3:
            return 6;
        default:
            return 7;
    }
}

struct Time {
    int year;
    unsigned month, day, hour, minute, second, milli;
};

/// By arithmetic alone: `gmtime_r` takes a lock, which a fault must not wait for.
Time UtcNow()
{
    timespec now{};
    ::clock_gettime(CLOCK_REALTIME, &now);
    const std::int64_t days = now.tv_sec / 86400;
    const auto rest = static_cast<unsigned>(now.tv_sec % 86400);
    // Days since 1 March of the year 0, in eras of 400 years: leap days come last in each.
    const std::int64_t shifted = days + 719468;
    const std::int64_t era = shifted / 146097;
    const auto inEra = static_cast<unsigned>(shifted % 146097);
    const unsigned yearInEra = (inEra - inEra / 1460 + inEra / 36524 - inEra / 146096) / 365;
    const unsigned inYear = inEra - (365 * yearInEra + yearInEra / 4 - yearInEra / 100);
    const unsigned fromMarch = (5 * inYear + 2) / 153;
    const unsigned month = fromMarch < 10 ? fromMarch + 3 : fromMarch - 9;
    return {static_cast<int>(yearInEra + era * 400) + (month <= 2 ? 1 : 0),
            month,
            inYear - (153 * fromMarch + 2) / 5 + 1,
            rest / 3600,
            rest / 60 % 60,
            rest % 60,
            static_cast<unsigned>(now.tv_nsec / 1000000)};
}

bool IsPlain(char c)
{
    return c >= 0x20 && c < 0x7F;
}

void AppendEscape(std::string& line, char c)
{
    switch (c) {
        case '\n':
            line += "\\n";
            return;
        case '\r':
            line += "\\r";
            return;
        case '\t':
            line += "\\t";
            return;
        default:
            fmt::format_to(std::back_inserter(line), "\\x{:02x}", static_cast<unsigned char>(c));
    }
}

/// The control characters of the upper half, which a terminal obeys as well.
bool IsUpperControl(std::string_view sequence)
{
    return sequence.size() == 2 && sequence[0] == '\xC2' &&
           static_cast<unsigned char>(sequence[1]) < 0xA0;
}

}  // namespace

std::size_t WriteLogHead(char* buffer, std::size_t size, int level, std::string_view logger)
{
    if (g_readBySystemd) {
        return std::min(
            size,
            fmt::format_to_n(buffer, size, "<{}>{} {}: ", Priority(level), level, logger).size);
    }
    const Time now = UtcNow();
    const auto written = fmt::format_to_n(
        buffer, size, "{:04}-{:02}-{:02}T{:02}:{:02}:{:02}.{:03}Z {} {}: ", now.year, now.month,
        now.day, now.hour, now.minute, now.second, now.milli, level, logger);
    return std::min(size, written.size);
}

void AppendLogHead(std::string& line, int level, std::string_view logger)
{
    char head[128];
    line.append(head, WriteLogHead(head, sizeof head, level, logger));
}

void AppendEscaped(std::string& line, std::string_view text)
{
    while (!text.empty()) {
        const auto plain = std::ranges::find_if_not(text, IsPlain);
        const auto length = static_cast<std::size_t>(plain - text.begin());
        line.append(text.substr(0, length));
        text.remove_prefix(length);
        if (text.empty()) {
            return;
        }
        const std::size_t sequence = Utf8SequenceLength(text);
        const std::size_t taken = std::max<std::size_t>(sequence, 1);
        if (sequence > 1 && !IsUpperControl(text.substr(0, sequence))) {
            line.append(text.substr(0, sequence));
        } else {
            for (const char c : text.substr(0, taken)) {
                AppendEscape(line, c);
            }
        }
        text.remove_prefix(taken);
    }
}

}  // namespace Orlu
