// SPDX-License-Identifier: Apache-2.0

#include "qsp/Library.h"

#include <array>
#include <cstddef>
#include <cstdio>
#include <optional>

#include "orlu/StrictJson.h"
#include "orlu/SystemUtils.h"
#include "qsp/ReasonCodes.h"

namespace QSP {

namespace {

constexpr std::size_t kUrlBytes = 2048;
/// A host keeps one or two; more means that it never releases any.
constexpr std::size_t kSessions = 64;

bool IsUrl(const std::string& text)
{
    const bool hasScheme = text.starts_with("http://") || text.starts_with("https://");
    return hasScheme && text.size() <= kUrlBytes && text.find_first_of(" \t\r\n") == text.npos;
}

}  // namespace

int Library::Start(const std::string& configFile)
{
    Stop();
    const std::optional<std::string> text = SystemUtils::ReadFile(configFile);
    std::string url;
    std::string error;
    const auto value = text ? Orlu::ParseStrictJson(*text, error) : std::nullopt;
    if (!value || !ReadText(*value, "cloudUrl", url) || !IsUrl(url)) {
        return Reason::kBadConfiguration;
    }
    m_cloud.SetUrl(std::move(url));
    m_started = true;
    return Reason::kSuccess;
}

void Library::Stop()
{
    m_started = false;
    m_sessions.clear();
}

int Library::OpenSession(QSP_SESSION& handle)
{
    if (m_sessions.size() >= kSessions) {
        return Reason::kBadSession;
    }
    auto session = std::make_unique<QSP_session_s>(m_cloud);
    // The request proves that the cloud can be reached; its answer is not needed.
    const char* version = nullptr;
    if (const int code = session->session.Version(version); code != Reason::kSuccess) {
        return code;
    }
    handle = session.get();
    m_sessions.emplace(handle, std::move(session));
    return Reason::kSuccess;
}

int Library::ReleaseSession(QSP_SESSION handle)
{
    return m_sessions.erase(handle) == 1 ? Reason::kSuccess : Reason::kBadSession;
}

Session* Library::Find(QSP_SESSION handle) const
{
    const auto found = m_sessions.find(handle);
    return found == m_sessions.end() ? nullptr : &found->second->session;
}

void Library::LogFailure(const char* call, int code) const noexcept
{
    if (m_log == nullptr || m_logLevel == 0) {
        return;
    }
    // A fixed buffer, because the failure may be a lack of memory.
    std::array<char, 128> line{};
    std::snprintf(line.data(), line.size(), "%s failed, reason code %d", call, code);
    m_log(line.data());
}

}  // namespace QSP
