// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>

namespace PorticoApi {

/// The usage events that were posted, a JSON line each, in a file that is only added to.
class EventLog {
public:
    EventLog() = default;
    ~EventLog();
    EventLog(const EventLog&) = delete;
    EventLog& operator=(const EventLog&) = delete;

    /// Makes the file, for its owner alone, if it is not there. False with the reason in `errno`.
    bool Open(const std::string& path);

    /// True if the whole line stands in the file; always true without a file.
    bool Add(const std::string& json) const;

private:
    int m_fd = -1;
};

}  // namespace PorticoApi
