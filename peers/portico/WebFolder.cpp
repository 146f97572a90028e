// SPDX-License-Identifier: Apache-2.0

#include "portico/WebFolder.h"

#include "orlu/Limits.h"
#include "portico/Folder.h"
#include "portico/LinkMessage.h"

namespace PorticoApi {

std::optional<FileContent> WebFolder::Find(const std::string& path) const
{
    const std::string file = path == "/" ? "/index.html" : path;
    if (m_folder.empty() || !Portico::IsResourcePath(file)) {
        return std::nullopt;
    }
    auto bytes = ReadFileBelow(m_folder, file.substr(1), Orlu::Limits::kPublishedBytes);
    if (!bytes) {
        return std::nullopt;
    }
    FileContent content;
    content.type = ContentTypeOf(file, *bytes);
    content.bytes = std::make_shared<const std::string>(std::move(*bytes));
    return content;
}

}  // namespace PorticoApi
