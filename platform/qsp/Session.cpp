// SPDX-License-Identifier: Apache-2.0

#include "qsp/Session.h"

#include <algorithm>
#include <utility>

#include "qsp/ReasonCodes.h"

namespace QSP {

namespace {

int NameAt(const std::vector<std::string>& list, std::uint32_t index, const char*& name)
{
    if (index >= list.size()) {
        return Reason::kBadIndex;
    }
    name = list[index].c_str();
    return Reason::kSuccess;
}

/// Retrieves a list of names. If the result is not 0, the list is empty.
int RetrieveNames(const CloudLink& cloud, const char* operation, const Json::Value& request,
                  const char* member, std::vector<std::string>& list)
{
    list.clear();
    Json::Value answer;
    const int code = cloud.Ask(operation, request, answer);
    if (code != Reason::kSuccess) {
        return code;
    }
    std::vector<std::string> names;
    if (!ReadTexts(answer, member, names)) {
        return Reason::kBadAnswer;
    }
    list = std::move(names);
    return Reason::kSuccess;
}

std::uint32_t Total(std::size_t size)
{
    return static_cast<std::uint32_t>(size);
}

}  // namespace

int Session::Version(const char*& text)
{
    Json::Value answer;
    const int code = m_cloud.Ask("version", Json::objectValue, answer);
    if (code != Reason::kSuccess) {
        return code;
    }
    if (!ReadText(answer, "version", m_version)) {
        return Reason::kBadAnswer;
    }
    text = m_version.c_str();
    return Reason::kSuccess;
}

int Session::RetrieveDeviceTypes(std::uint32_t& total)
{
    const int code = RetrieveNames(m_cloud, "deviceTypes", Json::objectValue, "types", m_types);
    total = Total(m_types.size());
    return code;
}

int Session::DeviceTypeName(std::uint32_t index, const char*& name) const
{
    return NameAt(m_types, index, name);
}

int Session::RetrieveBrands(const char* type, const char* prefix, std::uint32_t& total)
{
    Json::Value request;
    request["type"] = m_brandsType = type;
    request["prefix"] = prefix;
    // The lists below this one are emptied, so that an index never reads what another look-up left.
    m_models.clear();
    m_codesets.clear();
    const int code = RetrieveNames(m_cloud, "brands", request, "brands", m_brands);
    total = Total(m_brands.size());
    return code == Reason::kSuccess && total == 0 ? Reason::kNothingFound : code;
}

int Session::BrandName(std::uint32_t index, const char*& name) const
{
    return NameAt(m_brands, index, name);
}

int Session::SetThreshold(std::int32_t threshold)
{
    m_threshold = std::clamp(threshold, 0, 100);
    return Reason::kSuccess;
}

int Session::RetrieveModels(std::uint32_t brand, const char* hint, std::uint32_t& total)
{
    total = 0;
    if (brand >= m_brands.size()) {
        return Reason::kBadIndex;
    }
    m_models.clear();
    m_codesets.clear();
    Json::Value request;
    request["type"] = m_modelsType = m_brandsType;
    request["brand"] = m_modelsBrand = m_brands[brand];
    request["hint"] = hint;
    request["threshold"] = m_threshold;
    Json::Value answer;
    const int code = m_cloud.Ask("models", std::move(request), answer);
    if (code != Reason::kSuccess) {
        return code;
    }
    const Json::Value& list = answer["models"];
    if (!list.isArray()) {
        return Reason::kBadAnswer;
    }
    // Filled apart from `m_models`, which must stay empty if one element is wrong.
    std::vector<Model> models(list.size());
    for (Json::ArrayIndex i = 0; i < list.size(); ++i) {
        if (!ReadText(list[i], "name", models[i].name) ||
            !ReadNumber(list[i], "value", 100, models[i].value)) {
            return Reason::kBadAnswer;
        }
    }
    m_models = std::move(models);
    total = Total(m_models.size());
    return total == 0 ? Reason::kNothingFound : Reason::kSuccess;
}

int Session::ModelName(std::uint32_t index, const char*& name) const
{
    if (index >= m_models.size()) {
        return Reason::kBadIndex;
    }
    name = m_models[index].name.c_str();
    return Reason::kSuccess;
}

int Session::ModelFuzzyValue(std::uint32_t index, std::uint32_t& value) const
{
    if (index >= m_models.size()) {
        return Reason::kBadIndex;
    }
    value = m_models[index].value;
    return Reason::kSuccess;
}

int Session::RetrieveCodesetsByModel(std::uint32_t model, std::uint32_t& total)
{
    total = 0;
    if (model >= m_models.size()) {
        return Reason::kBadIndex;
    }
    Json::Value request;
    request["type"] = m_modelsType;
    request["brand"] = m_modelsBrand;
    request["model"] = m_models[model].name;
    return RetrieveCodesets("modelCodesets", request, total);
}

int Session::RetrieveCodesetsByBrand(std::uint32_t brand, std::uint32_t& total)
{
    total = 0;
    if (brand >= m_brands.size()) {
        return Reason::kBadIndex;
    }
    Json::Value request;
    request["type"] = m_brandsType;
    request["brand"] = m_brands[brand];
    return RetrieveCodesets("brandCodesets", request, total);
}

int Session::RetrieveCodesets(const char* operation, const Json::Value& request,
                              std::uint32_t& total)
{
    const int code = RetrieveNames(m_cloud, operation, request, "codesets", m_codesets);
    total = Total(m_codesets.size());
    return code;
}

int Session::CodesetName(std::uint32_t index, const char*& name) const
{
    return NameAt(m_codesets, index, name);
}

}  // namespace QSP
