// SPDX-License-Identifier: Apache-2.0

#include <json/value.h>

#include "uei/SessionText.h"
#include "uei/UEIInterface.h"

namespace TrellanService {

namespace {

constexpr int kNothingFound = 44;
constexpr int kFailed = -1;
constexpr int kNone = -2;

}  // namespace

int UEIInterface::LoadDeviceTypes()
{
    // Retrieved once for each session: `ResetCache` sets the total to 0.
    if (deviceTypesTotal != 0) {
        return 0;
    }
    ResetCache();
    std::uint32_t total = 0;
    if (QSP_retrieve_device_types_total(session, &total) != 0) {
        return kFailed;
    }
    deviceTypesTotal = total;
    return 0;
}

int UEIInterface::GetDeviceTypes(Json::Value& out, std::uint32_t kind)
{
    if (OpenSession(kind) != 0) {
        return kFailed;
    }
    ResetCache();
    if (LoadDeviceTypes() != 0) {
        return kFailed;
    }
    Json::Value types(Json::arrayValue);
    for (std::uint32_t i = 0; i < deviceTypesTotal; ++i) {
        const char* name = nullptr;
        if (QSP_get_device_type_name(session, i, &name) != 0 || name == nullptr) {
            return kFailed;
        }
        types.append(name);
    }
    out["types"] = std::move(types);
    return 0;
}

/// Retrieves the list of brands anew and gives the library's code. If that is not 0, nothing of the
/// old list stays cached.
int UEIInterface::RetrieveBrands(const std::string& type, const std::string& prefix)
{
    ResetBrands();
    std::uint32_t total = 0;
    const int code = QSP_retrieve_brands_total(session, type.c_str(), prefix.c_str(), 1, &total);
    if (code == 0) {
        Remember(typeName, type);
        brandsTotal = total;
    }
    return code;
}

int UEIInterface::LoadBrands(const std::string& type, const std::string& prefix, bool force)
{
    if (!force && type == typeName.data() && brandsTotal != 0) {
        return 0;
    }
    const int code = RetrieveBrands(type, prefix);
    return code == 0 ? 0 : code == kNothingFound ? kNone : kFailed;
}

int UEIInterface::WalkBrands(const std::string& type, const std::string& prefix, std::uint32_t kind,
                             const std::function<void(const char*)>& add)
{
    if (OpenSession(kind) != 0 || LoadDeviceTypes() != 0) {
        return kFailed;
    }
    if (const int code = RetrieveBrands(type, prefix); code != 0) {
        // A prefix without brands is an empty list, not a failure.
        return code == kNothingFound ? 0 : kFailed;
    }
    for (std::uint32_t i = 0; i < brandsTotal; ++i) {
        const char* name = nullptr;
        if (QSP_get_brand_name(session, i, &name) != 0 || name == nullptr) {
            return kFailed;
        }
        add(name);
    }
    return 0;
}

int UEIInterface::GetBrands(const std::string& type, const std::string& prefix, Json::Value& out,
                            std::uint32_t kind)
{
    Json::Value brands(Json::arrayValue);
    if (WalkBrands(type, prefix, kind, [&brands](const char* name) { brands.append(name); }) != 0) {
        return kFailed;
    }
    out["type"] = type;
    out["prefix"] = prefix;
    out["brands"] = std::move(brands);
    return 0;
}

int UEIInterface::FindBrandIndex(const std::string& type, const std::string& brand,
                                 std::uint32_t kind)
{
    if (OpenSession(kind) != 0 || LoadDeviceTypes() != 0) {
        return kFailed;
    }
    if (const int loaded = LoadBrands(type, brand, false); loaded != 0) {
        return loaded;
    }
    // The index is valid as long as the list of brands; a new list resets it.
    if (brand == brandName.data()) {
        return brandIndex;
    }
    if (const int found = SearchBrand(brand); found != kNone) {
        return found;
    }
    // The list may have been made for another prefix that leaves this brand out.
    if (RetrieveBrands(type, brand) != 0) {
        return kFailed;
    }
    return brandsTotal == 0 ? kNone : SearchBrand(brand);
}

int UEIInterface::SearchBrand(const std::string& brand)
{
    for (std::uint32_t i = 0; i < brandsTotal; ++i) {
        const char* name = nullptr;
        if (QSP_get_brand_name(session, i, &name) != 0 || name == nullptr) {
            return kFailed;
        }
        if (brand == name) {
            Remember(brandName, brand);
            brandIndex = static_cast<std::int32_t>(i);
            return brandIndex;
        }
    }
    return kNone;
}

}  // namespace TrellanService
