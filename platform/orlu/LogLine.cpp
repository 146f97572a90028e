// SPDX-License-Identifier: Apache-2.0

#include "orlu/LogLine.h"

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <iterator>

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

/// Puts texts and numbers of fixed width into a buffer; what does not fit is cut. Two thirds of a
/// line's cost would be a general formatter's work on its seven small numbers.
class Head {
public:
    Head(char* buffer, std::size_t room) : m_begin(buffer), m_at(buffer), m_end(buffer + room) {}

    Head& Put(std::string_view text)
    {
        const auto room = static_cast<std::size_t>(m_end - m_at);
        m_at = std::copy_n(text.data(), std::min(text.size(), room), m_at);
        return *this;
    }

    Head& Put(unsigned value, std::size_t width)
    {
        char digits[4];
        for (std::size_t at = width; at > 0; value /= 10) {
            digits[--at] = static_cast<char>('0' + value % 10);
        }
        return Put({digits, width});
    }

    std::size_t Size() const { return static_cast<std::size_t>(m_at - m_begin); }

private:
    char* m_begin;
    char* m_at;
    char* m_end;
};

unsigned Priority(int level)
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
    unsigned year, month, day, hour, minute, second, milli;
};

/// By arithmetic alone: `gmtime_r` takes a lock, which a fault must not wait for.
Time UtcNow()
{
    using namespace std::chrono;
    const auto now = floor<milliseconds>(system_clock::now());
    const auto today = floor<days>(now);
    const year_month_day date(today);
    const hh_mm_ss time(now - today);
    return {static_cast<unsigned>(static_cast<int>(date.year())),
            static_cast<unsigned>(date.month()),
            static_cast<unsigned>(date.day()),
            static_cast<unsigned>(time.hours().count()),
            static_cast<unsigned>(time.minutes().count()),
            static_cast<unsigned>(time.seconds().count()),
            static_cast<unsigned>(time.subseconds().count())};
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
    Head head(buffer, size);
    if (g_readBySystemd) {
        head.Put("<").Put(Priority(level), 1).Put(">");
    } else {
        const Time now = UtcNow();
        head.Put(now.year, 4).Put("-").Put(now.month, 2).Put("-").Put(now.day, 2).Put("T");
        head.Put(now.hour, 2).Put(":").Put(now.minute, 2).Put(":").Put(now.second, 2).Put(".");
        head.Put(now.milli, 3).Put("Z ");
    }
    head.Put(static_cast<unsigned>(level), 1).Put(" ").Put(logger).Put(": ");
    return head.Size();
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
