// SPDX-License-Identifier: Apache-2.0

// The one-shot digests of OpenSSL 3 load its providers, which cost a megabyte of memory. The plain
// MD5 functions are enough for a fingerprint.
#define OPENSSL_SUPPRESS_DEPRECATED

#include <array>

#include <fmt/format.h>
#include <openssl/md5.h>

#include "codesets/Trellan_ServiceCodesetHandler.h"

namespace TrellanService {

void Trellan_ServiceCodesetHandler::StoreCodesetChecksum(const char* name, const std::uint8_t* data,
                                                         std::uint32_t length)
{
    std::array<std::uint8_t, MD5_DIGEST_LENGTH> digest{};
    MD5_CTX context;
    MD5_Init(&context);
    MD5_Update(&context, data, length);
    MD5_Final(digest.data(), &context);
    const auto entry = m_codesets.find(std::string_view(name));
    // `trs load_codeset` may load a code set that no source uses; its fingerprint is not needed.
    if (entry != m_codesets.end()) {
        entry->second.checksum = fmt::format("{:02x}", fmt::join(digest, ""));
    }
}

}  // namespace TrellanService
