// SPDX-License-Identifier: Apache-2.0

#include <algorithm>
#include <cstdlib>

#include "blaster/Trellan_ServiceBlasterProxy.h"
#include "codesets/Trellan_ServiceCodesetHandler.h"
#include "uei/UEIInterface.h"
#include "uei/UEILog.h"

using namespace LpmServiceMessages;

namespace TrellanService {

namespace {

constexpr std::string_view kClasses = "TCNSVYRMADH";
constexpr std::size_t kNameBytes = 5;
constexpr std::size_t kNumberDigits = 4;
constexpr int kNoData = 4;
constexpr int kQuotaReached = 227;
constexpr int kSendFailed = 15;
constexpr std::uint32_t kTwo = 2;
constexpr std::size_t kCallbacks = 14;
constexpr std::size_t kCodesetCallback = 5;

CodesetTransferBuffer s_buffer;

/// Whether the text begins with a code set name.
bool BeginsWithName(std::string_view text)
{
    if (text.empty() || kClasses.find(text[0]) == std::string_view::npos) {
        return false;
    }
    // A copy with a zero at its end, as `strtol` would read on into the rest of a list.
    const std::string digits(text.substr(1, kNumberDigits));
    char* end = nullptr;
    const long number = std::strtol(digits.c_str(), &end, 10);
    return end != digits.c_str() && number < (text[0] == 'H' ? 4096 : 8192);
}

}  // namespace

std::string UEIInterface::ValidateCodesetName(const char* name)
{
    kUEILog.Log(3, "Validating codeset name {}", name == nullptr ? "" : name);
    std::string_view text(name == nullptr ? "" : name);
    while (!BeginsWithName(text)) {
        const std::size_t comma = text.find(',');
        if (comma == std::string_view::npos) {
            kUEILog.Put(3, "Invalid codeset name ");
            validCodeset.clear();
            return validCodeset;
        }
        // A list may begin with names of another form; the first valid one counts.
        text.remove_prefix(comma + 1);
    }
    std::string valid(text.substr(0, kNameBytes));
    // A short name is filled with zeros, so that callers get five bytes in any case.
    valid.resize(kNameBytes, '\0');
    validCodeset = valid;
    return valid;
}

int UEIInterface::GetCodesetBinary(const char* name, std::uint32_t kind)
{
    if (OpenSession(kind) != 0) {
        kUEILog.Put(3, "Unable to open UEI cloud session");
        return -1;
    }
    // The library takes a table of all its callbacks; the null entries are not registered.
    std::array<void*, kCallbacks> callbacks{};
    callbacks[kCodesetCallback] = reinterpret_cast<void*>(&UEIInterface::HandleCodesetBinary);
    if (UEI_register_ir_callbacks(callbacks.data()) != 0) {
        kUEILog.Put(3, "Unable to IR callback with UEI cloud");
        return -1;
    }
    kUEILog.Put(3, "Registered codeset callback");
    // The library calls `HandleCodesetBinary` before it returns.
    const int code = QSP_send_codeset_by_name(session, name, kTwo);
    if (code == 0) {
        kUEILog.Put(3, "Codeset retrieved from UEI cloud");
        return 0;
    }
    if (code == kQuotaReached || code == kSendFailed) {
        kUEILog.Put(1, "UEI code set download quota reached.  Must be reset by UEI");
    } else {
        kUEILog.Log(3, "Unable to download codeset {}", code);
    }
    return -1;
}

int UEIInterface::HandleCodesetBinary(const char* name, const std::uint8_t* data,
                                      std::uint32_t size)
{
    const std::string_view text(name == nullptr ? "" : name);
    kUEILog.Log(3, "codeset {} received from UEI cloud, length {}", text, size);
    if (size == 0 || data == nullptr) {
        kUEILog.Put(3, "no codeset data provided from UEI cloud");
        return kNoData;
    }
    // Refused before anything is written: the buffer keeps the last complete download.
    if (size > CodesetTransferBuffer::kMaxBytes) {
        kUEILog.Log(1, "codeset {} of {} bytes is too large for the blaster", text, size);
        return kNoData;
    }
    s_buffer.name.fill('\0');
    text.copy(s_buffer.name.data(), s_buffer.name.size() - 1);
    s_buffer.size = size;
    std::copy_n(data, size, s_buffer.data.begin());
    kUEILog.Log(3, "OSM: received codeset {} /size {}", text, size);
    return 0;
}

void UEIInterface::LoadCodeset(const std::string& name,
                               const Callback<BulkTransferResponse>& callback, std::uint32_t kind)
{
    if (GetCodesetBinary(name.c_str(), kind) != 0) {
        BulkTransferResponse response;
        response.set_result(BULK_TRANSFER_ERROR);
        if (callback) {
            callback(response);
        }
        return;
    }
    // At the end of the sync this fingerprint is compared with the whitelist.
    m_neighbours.CodesetHandler().StoreCodesetChecksum(s_buffer.name.data(), s_buffer.data.data(),
                                                       s_buffer.size);
    m_neighbours.BlasterProxy().QueueCallback(callback);
    StoreInBlaster();
}

/// Begins the transfer of the last download. The callback for its result must be queued before.
void UEIInterface::StoreInBlaster()
{
    m_neighbours.BlasterProxy().StoreCodesetInBlaster(s_buffer.name.data(), s_buffer.data.data(),
                                                      s_buffer.size);
}

const CodesetTransferBuffer& UEIInterface::TransferBuffer()
{
    return s_buffer;
}

}  // namespace TrellanService
