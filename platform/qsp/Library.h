// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>

#include "qsp/CloudLink.h"
#include "qsp/Session.h"
#include "qsp/qsp.h"

namespace QSP {

using LogFunction = int (*)(const char* text);

/// The state of the library between calls: whether it was started, its settings and callbacks, and
/// the open sessions, against which each handle is checked before it is used. All on one thread.
class Library {
public:
    CloudLink& Cloud() { return m_cloud; }
    void SetLog(LogFunction log) { m_log = log; }
    void SetLogLevel(std::uint32_t level) { m_logLevel = level; }
    void SetCodesetFunction(CodesetFunction deliver) { m_deliver = deliver; }
    CodesetFunction DeliverCodeset() const { return m_deliver; }

    /// Reads the configuration, an object with the text `cloudUrl`, from the path under
    /// `ORLU_ROOT`. Sends no request.
    int Start(const std::string& configFile);
    /// Ends all sessions. The settings are kept.
    void Stop();
    bool IsStarted() const { return m_started; }

    /// Opens a session. It asks the cloud for its version first, so that a session is open only if
    /// the cloud could be reached.
    int OpenSession(QSP_SESSION& handle);
    int ReleaseSession(QSP_SESSION handle);
    /// Null for a handle that is not one of an open session.
    Session* Find(QSP_SESSION handle) const;

    /// Logs a call that failed, unless the level is 0.
    void LogFailure(const char* call, int code) const noexcept;

private:
    CloudLink m_cloud;
    bool m_started = false;
    std::uint32_t m_logLevel = 0;
    LogFunction m_log = nullptr;
    CodesetFunction m_deliver = nullptr;
    std::map<QSP_SESSION, std::unique_ptr<QSP_session_s>> m_sessions;
};

}  // namespace QSP

struct QSP_session_s {
    explicit QSP_session_s(const QSP::CloudLink& cloud) : session(cloud) {}
    QSP::Session session;
};
