// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <boost/asio/io_context.hpp>
#include <boost/asio/steady_timer.hpp>

#include <chrono>
#include <map>
#include <memory>
#include <optional>
#include <string>

namespace PorticoApi {

/// Content of a file and its content type.
struct FileContent {
    std::shared_ptr<const std::string> bytes;
    const char* type = "application/octet-stream";
};

/// The content type by the extension of the name, or by the content if the extension is unknown.
const char* ContentTypeOf(const std::string& name, const std::string& bytes);

/// Files that services have published for a limited time. A file is read when it is published, so
/// the service may remove its staging file at once.
class PublishedFiles {
public:
    explicit PublishedFiles(boost::asio::io_context& context) : m_context(context) {}

    /// Publishes the regular file `name` of `folder` and replaces a file of that name. Nothing on
    /// success, else the reason: no such file, not a plain name, a link, too large, too many files.
    std::optional<std::string> Publish(const std::string& folder, const std::string& name,
                                       std::chrono::milliseconds lifeSpan);

    /// Nothing for an unknown name, and after the file's deadline.
    std::optional<FileContent> Find(const std::string& name) const;

private:
    struct Entry {
        FileContent content;
        std::unique_ptr<boost::asio::steady_timer> end;
    };

    boost::asio::io_context& m_context;
    std::map<std::string, Entry> m_files;
};

}  // namespace PorticoApi
