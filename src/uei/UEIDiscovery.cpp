// SPDX-License-Identifier: Apache-2.0

#include <algorithm>

#include "uei/SessionText.h"
#include "uei/UEIInterface.h"
#include "uei/UEILog.h"

using namespace TrellanServiceMessages;

namespace TrellanService {

namespace {

constexpr std::uint32_t kOnlineKind = 2;
constexpr std::size_t kEdidBytes = 256;
constexpr const char* kSuccess = "RESULT_SUCCESS";
constexpr const char* kError = "RESULT_ERROR";
/// The name by which the library says that the device has no code set.
constexpr std::string_view kNoCodeset = "T9999";

/// What the library found. The flag is not used. The texts last to the library's next call only.
struct Found {
    const char* type = nullptr;
    const char* brand = nullptr;
    const char* codeset = nullptr;
    std::uint8_t flag = 0;

    int Get(QSP_SESSION session)
    {
        return QSP_discover_device_info_get(session, &type, &brand, &codeset, &flag);
    }
};

}  // namespace

void UEIInterface::FindCECDevice(const FindCECDevice_t& request,
                                 const Callback<FindCECDevice_t>& callback)
{
    FindCECDevice_t answer;
    answer.set_result(kError);
    if (OpenSession(kOnlineKind) != 0) {
        kUEILog.Put(3, "Unable to open uei session");
    } else {
        int code = QSP_discover_retrieve_info_cec(session, request.vendorid(),
                                                  static_cast<std::uint16_t>(request.logicaladdr()),
                                                  request.osd().c_str());
        kUEILog.Log(3, "Retrieve info returned {}", code);
        answer.set_vendorid(request.vendorid());
        answer.set_logicaladdr(request.logicaladdr());
        answer.set_osd(request.osd());
        Found found;
        if (code == 0) {
            code = found.Get(session);
            kUEILog.Log(3, "discover device info get returned {}", code);
        }
        if (code == 0) {
            kUEILog.Log(3, "Found CEC devicetype:{} brand:{} codeset:{}", OrEmpty(found.type),
                        OrEmpty(found.brand), OrEmpty(found.codeset));
            answer.set_devicetype(OrEmpty(found.type));
            answer.set_brand(OrEmpty(found.brand));
            answer.set_cicode(OrEmpty(found.codeset) == kNoCodeset ? "" : OrEmpty(found.codeset));
            answer.set_result(kSuccess);
        }
    }
    if (callback) {
        callback(answer);
    }
}

void UEIInterface::FindEDIDDevice(const FindEDIDDevice_t& request,
                                  const Callback<FindEDIDDevice_t>& callback)
{
    FindEDIDDevice_t answer;
    answer.set_result(kError);
    std::array<std::uint8_t, kEdidBytes> edid{};
    const std::string& given = request.edid();
    // The library gets 256 bytes in any case, so a short EDID is filled with zeros.
    std::copy_n(given.begin(), std::min(given.size(), edid.size()), edid.begin());
    Found found;
    if (OpenSession(kOnlineKind) != 0) {
        kUEILog.Put(3, "Unable to open uei session");
    } else if (int code = QSP_discover_retrieve_info_edid(session, edid.data(), kEdidBytes);
               code != 0) {
        kUEILog.Log(1, "Retrieve info returned {}", code);
    } else if (code = found.Get(session); code != 0) {
        kUEILog.Log(1, "discover device info get returned {}", code);
    } else {
        answer.set_devicetype(OrEmpty(found.type));
        answer.set_brand(OrEmpty(found.brand));
        answer.set_cicode(OrEmpty(found.codeset));
        answer.set_result(kSuccess);
        kUEILog.Log(3, "Found EDID {}", answer.DebugString());
    }
    if (callback) {
        callback(answer);
    }
}

}  // namespace TrellanService
