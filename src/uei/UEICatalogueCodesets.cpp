// SPDX-License-Identifier: Apache-2.0

#include <json/value.h>

#include "uei/UEIInterface.h"
#include "uei/UEILog.h"

namespace TrellanService {

namespace {

constexpr int kFailed = -1;
constexpr int kNone = -2;

}  // namespace

/// Puts the valid name of each code set in the library's list into "codesets".
int UEIInterface::AddCodesets(Json::Value& out, bool trace)
{
    Json::Value codesets(Json::arrayValue);
    for (std::uint32_t i = 0; i < codesetsTotal; ++i) {
        const char* name = nullptr;
        if (QSP_get_codeset_name(session, i, &name) != 0) {
            kUEILog.Put(3, "Unable to get codeset name");
            return kFailed;
        }
        const std::string valid = ValidateCodesetName(name);
        if (valid.empty()) {
            kUEILog.Put(3, "UEI returned invalid codeset name");
            return kFailed;
        }
        if (trace) {
            kUEILog.Log(4, "Codeset[{}]: {}", i, valid.c_str());
        }
        // `c_str` drops the zeros that fill a short name.
        codesets.append(valid.c_str());
    }
    // Set at the end, so that a failure half-way leaves `out` without a part of the list.
    out["codesets"] = std::move(codesets);
    return 0;
}

int UEIInterface::GetModelCodesets(std::uint32_t model, Json::Value& out)
{
    ResetCodesets();
    std::uint32_t total = 0;
    const int code = QSP_retrieve_codesets_by_model_total(session, model, &total);
    if (code != 0 || total == 0) {
        kUEILog.Log(2, "Unable to retrieve num of codesets {} {}", code, total);
        return kFailed;
    }
    codesetsTotal = total;
    return AddCodesets(out, false);
}

int UEIInterface::GetModelCodesets(const std::string& type, const std::string& brand,
                                   const std::string& model, Json::Value& out, std::uint32_t kind)
{
    const int found = FindModelIndex(type, brand, model, kind);
    if (found == kFailed) {
        return kFailed;
    }
    if (found == kNone) {
        out["codesets"] = Json::Value(Json::arrayValue);
    } else if (GetModelCodesets(static_cast<std::uint32_t>(found), out) != 0) {
        return kFailed;
    }
    out["type"] = type;
    out["brand"] = brand;
    out["model"] = model;
    return 0;
}

int UEIInterface::GetBrandCodesets(std::uint32_t brand, Json::Value& out)
{
    // The library has one list of code sets, so this look-up replaces that of a model.
    ResetModels();
    std::uint32_t total = 0;
    const int code = QSP_retrieve_codesets_by_brand_total(session, brand, &total);
    if (code != 0 || total == 0) {
        kUEILog.Log(2, "get num codesets {} {}", code, total);
        return kFailed;
    }
    codesetsTotal = total;
    kUEILog.Log(4, "Codeset(s) for {} {}", typeName.data(), brandName.data());
    return AddCodesets(out, true);
}

int UEIInterface::GetBrandCodesets(const std::string& type, const std::string& brand,
                                   Json::Value& out, std::uint32_t kind)
{
    const int found = FindBrandIndex(type, brand, kind);
    if (found == kFailed) {
        return kFailed;
    }
    if (found == kNone) {
        out["codesets"] = Json::Value(Json::arrayValue);
    } else if (GetBrandCodesets(static_cast<std::uint32_t>(found), out) != 0) {
        return kFailed;
    }
    out["type"] = type;
    out["brand"] = brand;
    return 0;
}

}  // namespace TrellanService
