// SPDX-License-Identifier: Apache-2.0

#include <algorithm>

#include <json/value.h>

#include "uei/SessionText.h"
#include "uei/UEIInterface.h"
#include "uei/UEILog.h"

namespace TrellanService {

namespace {

constexpr int kNothingFound = 44;
constexpr int kFailed = -1;
constexpr int kNone = -2;
constexpr int kDuplicate = -3;
constexpr std::uint32_t kNoFuzzyValue = 33;
constexpr std::int32_t kDefaultThreshold = 50;
constexpr std::uint32_t kFewModels = 50;

/// The hints of a sweep over all models of a brand, one after the other.
constexpr std::string_view kSweep = "0123456789abcdefghijklmnopqrstuvwxyz";

bool Holds(const Json::Value& array, const char* name)
{
    for (auto i = array.size(); i > 0; --i) {
        if (array[i - 1] == name) {
            return true;
        }
    }
    return false;
}

}  // namespace

int UEIInterface::FindModelIndex(const std::string& type, const std::string& brand,
                                 const std::string& model, std::uint32_t kind)
{
    const int foundBrand = FindBrandIndex(type, brand, kind);
    if (foundBrand < 0) {
        return foundBrand;
    }
    if (model == modelName.data()) {
        return modelIndex;
    }
    ResetModels();
    std::uint32_t total = 0;
    const int code = QSP_retrieve_models_total(session, static_cast<std::uint32_t>(foundBrand),
                                               model.c_str(), 1, &total);
    if (code != 0) {
        return code == kNothingFound ? kNone : kFailed;
    }
    modelsTotal = total;
    for (std::uint32_t i = 0; i < modelsTotal; ++i) {
        const char* name = nullptr;
        if (QSP_get_model_name(session, i, &name) != 0 || name == nullptr) {
            return kFailed;
        }
        if (model == name) {
            Remember(modelName, model);
            modelIndex = static_cast<std::int32_t>(i);
            return modelIndex;
        }
    }
    return kNone;
}

int UEIInterface::LoadModel(std::uint32_t index, Json::Value& models, Json::Value& codesets,
                            Json::Value& fuzzyValues, bool unique)
{
    const char* name = nullptr;
    if (QSP_get_model_name(session, index, &name) != 0 || name == nullptr) {
        return kFailed;
    }
    if (unique && Holds(models, name)) {
        return kDuplicate;
    }
    models.append(name);
    if (loadFuzzyValues) {
        std::uint32_t value = kNoFuzzyValue;
        // A failure leaves the default, so that the values stay in step with the models.
        QSP_get_model_fuzzy_value(session, index, &value);
        fuzzyValues.append(value);
    }
    return loadFirstCodeset ? LoadFirstCodeset(index, codesets) : 0;
}

int UEIInterface::LoadFirstCodeset(std::uint32_t model, Json::Value& codesets)
{
    ResetCodesets();
    std::uint32_t total = 0;
    if (const int code = QSP_retrieve_codesets_by_model_total(session, model, &total); code != 0) {
        kUEILog.Log(2, "get num codesets {} {}", code, total);
        return kFailed;
    }
    codesetsTotal = total;
    // A placeholder, so that the code sets stay in step with the models.
    if (codesetsTotal == 0) {
        codesets.append("NONE");
        return 0;
    }
    const char* name = nullptr;
    if (QSP_get_codeset_name(session, 0, &name) != 0) {
        return kFailed;
    }
    const std::string valid = ValidateCodesetName(name);
    if (valid.empty()) {
        kUEILog.Put(3, "UEI returned invalid codeset name");
        return kFailed;
    }
    codesets.append(valid.c_str());
    return 0;
}

/// Retrieves a list of models and appends them to the arrays of `out` that the flags ask for. A
/// duplicate is not a failure.
int UEIInterface::AddModels(const std::string& hint, std::uint32_t brand, bool unique,
                            Json::Value& out)
{
    std::uint32_t total = 0;
    if (QSP_retrieve_models_total(session, brand, hint.c_str(), 1, &total) != 0) {
        return kFailed;
    }
    modelsTotal = total;
    Json::Value none;
    for (std::uint32_t i = 0; i < modelsTotal; ++i) {
        const int loaded = LoadModel(i, out["models"], loadFirstCodeset ? out["codesets"] : none,
                                     loadFuzzyValues ? out["fuzzyVals"] : none, unique);
        if (loaded != 0 && loaded != kDuplicate) {
            return kFailed;
        }
    }
    return 0;
}

namespace {

/// Empty arrays, those that the flags ask for.
Json::Value EmptyModels(bool codesets, bool fuzzyValues)
{
    Json::Value lists;
    lists["models"] = Json::Value(Json::arrayValue);
    if (codesets) {
        lists["codesets"] = Json::Value(Json::arrayValue);
    }
    if (fuzzyValues) {
        lists["fuzzyVals"] = Json::Value(Json::arrayValue);
    }
    return lists;
}

void TakeOver(Json::Value& out, Json::Value&& lists)
{
    for (const std::string& name : lists.getMemberNames()) {
        out[name] = std::move(lists[name]);
    }
}

}  // namespace

int UEIInterface::LoadModels(std::uint32_t brand, const std::string& hint, std::int32_t threshold,
                             Json::Value& out)
{
    ResetModels();
    QSP_option_set_minimum_fuzzy_threshold(session, threshold);
    // Filled apart from `out`, which a failure must leave as it was.
    Json::Value lists = EmptyModels(loadFirstCodeset, loadFuzzyValues);
    if (AddModels(hint, brand, false, lists) != 0) {
        return kFailed;
    }
    TakeOver(out, std::move(lists));
    return 0;
}

int UEIInterface::GetModels(const std::string& type, const std::string& brand,
                            const std::string& hint, std::int32_t threshold, Json::Value& out,
                            std::uint32_t kind)
{
    const int found = FindBrandIndex(type, brand, kind);
    if (found == kFailed) {
        return kFailed;
    }
    if (found == kNone) {
        out["models"] = Json::Value(Json::arrayValue);
    } else {
        // The answer names the threshold that was used.
        threshold = threshold < 0 ? kDefaultThreshold : threshold;
        if (LoadModels(static_cast<std::uint32_t>(found), hint, threshold, out) != 0) {
            return kFailed;
        }
    }
    out["type"] = type;
    out["brand"] = brand;
    out["hint"] = hint;
    out["fuzzyThold"] = threshold;
    return 0;
}

int UEIInterface::LoadAllModels(std::uint32_t brand, Json::Value& out)
{
    ResetModels();
    QSP_option_set_minimum_fuzzy_threshold(session, 0);
    Json::Value lists = EmptyModels(loadFirstCodeset, loadFuzzyValues);
    if (AddModels("", brand, false, lists) != 0) {
        return kFailed;
    }
    if (modelsTotal >= kFewModels && !skipPrefixSweep) {
        QSP_option_set_minimum_fuzzy_threshold(session, kDefaultThreshold);
        for (const char first : kSweep) {
            if (AddModels(std::string(1, first), brand, true, lists) != 0) {
                return kFailed;
            }
        }
    }
    TakeOver(out, std::move(lists));
    return 0;
}

int UEIInterface::GetAllModels(const std::string& type, const std::string& brand, Json::Value& out,
                               std::uint32_t kind)
{
    const int found = FindBrandIndex(type, brand, kind);
    if (found == kFailed) {
        return kFailed;
    }
    if (found == kNone) {
        out["models"] = Json::Value(Json::arrayValue);
    } else if (LoadAllModels(static_cast<std::uint32_t>(found), out) != 0) {
        return kFailed;
    }
    out["type"] = type;
    out["brand"] = brand;
    out["hint"] = "";
    out["fuzzyThold"] = 0;
    return 0;
}

}  // namespace TrellanService
