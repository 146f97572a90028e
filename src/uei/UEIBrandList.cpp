// SPDX-License-Identifier: Apache-2.0

#include <google/protobuf/arena.h>

#include "orlu/ProtoToMarkup.h"
#include "orlu/SystemUtils.h"
#include "uei/DeviceTypes.h"
#include "uei/UEIInterface.h"
#include "uei/UEILog.h"

using namespace TrellanServiceMessages;

namespace TrellanService {

namespace {

constexpr int kMostBrands = 10000;
constexpr std::uint32_t kOnlineKind = 2;

/// Sets the filter to the next first character, which is "a" after "9". False after "z".
bool NextFilter(std::string& filter)
{
    const char first = filter.empty() ? '\0' : filter[0];
    if (first == 'z') {
        return false;
    }
    if (first == '9') {
        filter[0] = 'a';
    } else {
        filter.assign(1, static_cast<char>(static_cast<unsigned char>(first) + 1U));
    }
    return true;
}

}  // namespace

bool UEIInterface::GetBrandList(const BrandListReq_t& request)
{
    std::string filter = request.filter();
    // "." stands for the beginning of the list.
    if (filter.starts_with('.')) {
        filter = "0";
    }
    const std::string folder = m_neighbours.StagingDirectory();
    if (folder.empty()) {
        kUEILog.Put(3, "No staging directory for brandlist ");
        return false;
    }
    const char* type = UEIDeviceType(request.devicetype());
    if (type == nullptr) {
        kUEILog.Log(3, "No mapping for device type {}", request.devicetype());
        return false;
    }
    // One arena for thousands of names, so that they are freed at once.
    google::protobuf::Arena names;
    auto& response = *google::protobuf::Arena::CreateMessage<BrandListResp_t>(&names);
    auto& brands = *response.mutable_brandlist();
    do {
        // Each round retrieves the brands of one first character. A round that fails is taken back.
        const int before = brands.size();
        bool full = false;
        const auto add = [&brands, &full](const char* name) {
            // `WalkBrands` cannot be ended early, so the rest of the round is dropped.
            if (full) {
                return;
            }
            // One such name would make `ToJson` refuse the whole list.
            if (!StringUtils::IsUtf8(name)) {
                kUEILog.Put(2, "UEI returned a brand that is not UTF-8");
                return;
            }
            brands.Add(name);
            full = brands.size() == kMostBrands;
        };
        if (WalkBrands(type, filter, kOnlineKind, add) != 0) {
            // The list goes out with the rounds that succeeded, rather than not at all.
            brands.DeleteSubrange(before, brands.size() - before);
            break;
        }
    } while (NextFilter(filter));
    const std::string path = folder + "/" + m_neighbours.BrandListFileName();
    kUEILog.Log(3, "Writing brand list to file {}", path);
    const std::string text = ProtoToMarkup::ToJson(response, true, false, false);
    return SystemUtils::WriteFile(text.data(), text.data() + text.size(), path);
}

}  // namespace TrellanService
