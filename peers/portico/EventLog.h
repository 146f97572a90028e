// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>

namespace PorticoApi {

/// Appends the posted usage events to a file, one JSON line each.
class EventLog {
public:
    EventLog() = default;
    ~EventLog();
    EventLog(const EventLog&) = delete;
    EventLog& operator=(const EventLog&) = delete;

    /// Opens the file, or creates it readable by its owner alone. False, with the reason in
    /// `errno`, on failure.
    bool Open(const std::string& path);

    /// True if the whole line was written. Without a file always true.
    bool Add(const std::string& json) const;

private:
    int m_fd = -1;
};

}  // namespace PorticoApi
