// SPDX-License-Identifier: Apache-2.0

#include "orlu/LogLine.h"

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <iterator>

#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include "orlu/Utf8.h"

namespace Orlu {

namespace {

/// systemd names the device and inode of its log stream in the environment. If standard error was
/// redirected afterwards, they do not match.
bool IsReadBySystemd()
{
    const char* stream = std::getenv("JOURNAL_STREAM");
    struct stat status {};
    return stream && ::fstat(STDERR_FILENO, &status) == 0 &&
           fmt::format("{}:{}", status.st_dev, status.st_ino) == stream;
}

const bool g_readBySystemd = IsReadBySystemd();

/// Puts texts and numbers of fixed width into a buffer; what does not fit is cut. A general
/// formatter would spend two thirds of a line's time on its seven small numbers.
class Head {
public:
    Head(char* buffer, std::size_t capacity)
        : m_begin(buffer), m_at(buffer), m_end(buffer + capacity)
    {
    }

    Head& Put(std::string_view text)
    {
        const auto capacity = static_cast<std::size_t>(m_end - m_at);
        m_at = std::copy_n(text.data(), std::min(text.size(), capacity), m_at);
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

using Seconds = std::chrono::sys_seconds;

/// "2026-11-24T18:03:07." by arithmetic alone: `gmtime_r` takes a lock, which a fault must not wait
/// for.
void PutSecond(Head& head, Seconds second)
{
    using namespace std::chrono;
    const auto today = floor<days>(second);
    const year_month_day date(today);
    const hh_mm_ss time(second - today);
    head.Put(static_cast<unsigned>(static_cast<int>(date.year())), 4).Put("-");
    head.Put(static_cast<unsigned>(date.month()), 2).Put("-");
    head.Put(static_cast<unsigned>(date.day()), 2).Put("T");
    head.Put(static_cast<unsigned>(time.hours().count()), 2).Put(":");
    head.Put(static_cast<unsigned>(time.minutes().count()), 2).Put(":");
    head.Put(static_cast<unsigned>(time.seconds().count()), 2).Put(".");
}

/// The same; the text is kept for as long as the second stays the same.
void PutKnownSecond(Head& head, Seconds second)
{
    thread_local Seconds known = Seconds::min();
    thread_local char text[24];
    thread_local std::size_t size = 0;
    if (second != known) {
        Head fresh(text, sizeof text);
        PutSecond(fresh, second);
        size = fresh.Size();
        known = second;
    }
    head.Put({text, size});
}

void PutHead(Head& head, int level, std::string_view logger, void (*putSecond)(Head&, Seconds))
{
    using namespace std::chrono;
    if (g_readBySystemd) {
        head.Put("<").Put(Priority(level), 1).Put(">");
    } else {
        const auto now = floor<milliseconds>(system_clock::now());
        const auto second = floor<seconds>(now);
        putSecond(head, second);
        head.Put(static_cast<unsigned>((now - second).count()), 3).Put("Z ");
    }
    head.Put(static_cast<unsigned>(level), 1).Put(" ").Put(logger).Put(": ");
}

bool IsPlain(char c)
{
    return c >= 0x20 && c < 0x7F;
}

/// The length of the plain text at the beginning. Eight bytes at a time: the highest bit of a byte
/// is set in the word if the byte is above 0x7F, in the sum if it is 0x7F, and in the difference,
/// by a borrow, if it is below 0x20. A carry or borrow into the next byte comes only from a byte
/// that is not plain itself, so the test is exact.
std::size_t PlainLength(std::string_view text)
{
    constexpr std::uint64_t kOnes = 0x0101'0101'0101'0101;
    std::size_t length = 0;
    for (std::uint64_t word = 0; text.size() - length >= sizeof word; length += sizeof word) {
        std::memcpy(&word, text.data() + length, sizeof word);
        if (((word | (word + kOnes) | (word - 0x20 * kOnes)) & 0x80 * kOnes) != 0) {
            break;
        }
    }
    while (length < text.size() && IsPlain(text[length])) {
        ++length;
    }
    return length;
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

/// U+0080 to U+009F: control characters, which a terminal obeys too.
bool IsUpperControl(std::string_view sequence)
{
    return sequence.size() == 2 && sequence[0] == '\xC2' &&
           static_cast<unsigned char>(sequence[1]) < 0xA0;
}

}  // namespace

std::size_t WriteLogHead(char* buffer, std::size_t size, int level, std::string_view logger)
{
    Head head(buffer, size);
    PutHead(head, level, logger, PutSecond);
    return head.Size();
}

void AppendLogHead(std::string& line, int level, std::string_view logger)
{
    char text[128];
    Head head(text, sizeof text);
    PutHead(head, level, logger, PutKnownSecond);
    line.append(text, head.Size());
}

void AppendEscaped(std::string& line, std::string_view text)
{
    while (!text.empty()) {
        const auto length = PlainLength(text);
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
