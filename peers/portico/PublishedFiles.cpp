// SPDX-License-Identifier: Apache-2.0

#include "portico/PublishedFiles.h"

#include "orlu/Limits.h"
#include "orlu/StrictJson.h"
#include "portico/Folder.h"
#include "portico/LinkMessage.h"

#include <string_view>
#include <utility>

namespace PorticoApi {

const char* ContentTypeOf(const std::string& name, const std::string& bytes)
{
    static constexpr std::pair<std::string_view, const char*> kTypes[] = {
        {".html", "text/html; charset=utf-8"},
        {".css", "text/css; charset=utf-8"},
        {".js", "text/javascript; charset=utf-8"},
        {".mjs", "text/javascript; charset=utf-8"},
        {".json", "application/json"},
        {".yaml", "application/yaml"},
        {".svg", "image/svg+xml"},
        {".png", "image/png"},
        {".jpg", "image/jpeg"},
        {".ico", "image/x-icon"},
        {".woff2", "font/woff2"},
        {".txt", "text/plain; charset=utf-8"},
    };
    for (const auto& [ending, type] : kTypes) {
        if (name.ends_with(ending)) {
            return type;
        }
    }
    std::string ignored;
    return Orlu::ParseStrictJson(bytes, ignored) ? "application/json" : "application/octet-stream";
}

std::optional<std::string> PublishedFiles::Publish(const std::string& folder,
                                                   const std::string& name,
                                                   std::chrono::milliseconds lifeSpan)
{
    // The name becomes one component of the URL's path.
    if (name.find('/') != std::string::npos || !Portico::IsResourcePath("/" + name)) {
        return "the file's name is no plain name";
    }
    if (!m_files.contains(name) && m_files.size() >= Orlu::Limits::kPublishedFiles) {
        return "too many files are published";
    }
    auto bytes = ReadFileBelow(folder, name, Orlu::Limits::kPublishedBytes);
    if (!bytes) {
        return "the file can't be read";
    }
    Entry entry;
    entry.content.type = ContentTypeOf(name, *bytes);
    entry.content.bytes = std::make_shared<const std::string>(std::move(*bytes));
    entry.end = std::make_unique<boost::asio::steady_timer>(m_context, lifeSpan);
    entry.end->async_wait([this, name](boost::system::error_code stopped) {
        if (!stopped) {
            m_files.erase(name);
        }
    });
    // Destroys an earlier entry of the name, and with it the timer that would remove the new one.
    m_files.insert_or_assign(name, std::move(entry));
    return std::nullopt;
}

std::optional<FileContent> PublishedFiles::Find(const std::string& name) const
{
    const auto found = m_files.find(name);
    // The timer may fire later than the deadline.
    if (found == m_files.end() || found->second.end->expiry() <= std::chrono::steady_clock::now()) {
        return std::nullopt;
    }
    return found->second.content;
}

}  // namespace PorticoApi
