// SPDX-License-Identifier: Apache-2.0

#include <algorithm>
#include <cstdint>
#include <cstring>

#include <fcntl.h>

#include "codesets/Trellan_ServiceCodesetHandler.h"
#include "orlu/DPrint.h"
#include "orlu/Files.h"
#include "support/NoSync.h"

namespace {

/// One file in memory for every path.
class MemoryFile final : public Orlu::FileSystemIF {
public:
    std::string content;

    int Open(const char*, int flags, mode_t) override
    {
        m_at = 0;
        if ((flags & O_CREAT) != 0) {
            content.clear();
        }
        return 1;
    }
    ssize_t Read(int, void* data, std::size_t size) override
    {
        const std::size_t count = std::min(size, content.size() - m_at);
        std::memcpy(data, content.data() + m_at, count);
        m_at += count;
        return static_cast<ssize_t>(count);
    }
    ssize_t Write(int, const void* data, std::size_t size) override
    {
        content.append(static_cast<const char*>(data), size);
        return static_cast<ssize_t>(size);
    }
    int Stat(int, struct stat* status) override
    {
        status->st_mode = S_IFREG;
        status->st_size = static_cast<off_t>(content.size());
        return 0;
    }
    int Sync(int) override { return 0; }
    int Close(int) override { return 0; }
    int Rename(const char*, const char*) override { return 0; }
    int Unlink(const char*) override { return 0; }

private:
    std::size_t m_at = 0;
};

class NoServer final : public TrellanService::CodesetServerIF {
public:
    bool IsCloudConnected() override { return false; }
    void NotifyBlasterSyncComplete(bool) override {}
};

bool AreEqual(const TrellanService::CodesetMap& one, const TrellanService::CodesetMap& other)
{
    return std::ranges::equal(one, other, [](const auto& a, const auto& b) {
        return a.first == b.first && a.second.devNum == b.second.devNum &&
               a.second.ambiguousKeyBitMap == b.second.ambiguousKeyBitMap &&
               a.second.checksum == b.second.checksum && a.second.ueiKeys == b.second.ueiKeys;
    });
}

}  // namespace

// The handler reads the same from a file and from the file that it writes after that.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    DPrint::SetLevel(0);
    MemoryFile file;
    Orlu::InstallFiles(&file);
    file.content.assign(data, data + size);
    NoServer server;
    NoSync sync;
    TrellanService::Trellan_ServiceCodesetHandler first(server, sync);
    first.InitCodesetMap();
    first.StoreCodesetConfig();
    TrellanService::Trellan_ServiceCodesetHandler second(server, sync);
    second.InitCodesetMap();
    if (!AreEqual(first.GetCodesets(), second.GetCodesets())) {
        __builtin_trap();
    }
    Orlu::InstallFiles(nullptr);
    return 0;
}
