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

/// A file as it is handed out.
struct FileContent {
    std::shared_ptr<const std::string> bytes;
    const char* type = "application/octet-stream";
};

/// The content type by the name's end; by the content where the name says nothing.
const char* ContentTypeOf(const std::string& name, const std::string& bytes);

/// Files that services have published for a while. A file is read when it is published, so that
/// its staging file may go at once.
class PublishedFiles {
public:
    explicit PublishedFiles(boost::asio::io_context& context) : m_context(context) {}

    /// Publishes the regular file `name` of `folder`, in the place of one of that name. Nothing if
    /// done, else the reason: no such file, no plain name, a link, too large, too many.
    std::optional<std::string> Publish(const std::string& folder, const std::string& name,
                                       std::chrono::milliseconds lifeSpan);

    /// Nothing after its deadline.
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
