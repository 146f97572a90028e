// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "portico/PublishedFiles.h"

#include <optional>
#include <string>
#include <utility>

namespace PorticoApi {

/// The folder of the product's page, if there is one.
class WebFolder {
public:
    explicit WebFolder(std::string folder) : m_folder(std::move(folder)) {}

    /// The file at a request's path; "/" is index.html. Nothing for a path that is not plain or has
    /// no file in the folder.
    std::optional<FileContent> Find(const std::string& path) const;

private:
    const std::string m_folder;
};

}  // namespace PorticoApi
