// SPDX-License-Identifier: Apache-2.0

#include "cloud/CloudService.h"

#include "cloud/Base64.h"
#include "cloud/JsonMembers.h"
#include "cloud/Schema.h"
#include "orlu/StrictJson.h"

#include <json/writer.h>

#include <algorithm>
#include <array>
#include <utility>

namespace Cloud {

namespace {

constexpr unsigned kBadRequest = 400;
constexpr unsigned kServerError = 500;
constexpr std::size_t kIdentityBytes = 64;
constexpr std::size_t kEdidBytes = 256;
constexpr std::uint32_t kLargestVendor = 0xffffff;
constexpr std::uint32_t kLargestAddress = 0xffff;
/// Identities whose downloads are counted, so that memory is bounded. Further ones have no quota.
constexpr std::size_t kIdentities = 4096;
/// Keeps the largest answer, that for a whole type, below kAnswerBytes.
constexpr std::size_t kTestCodesets = 8192;

Status Put(Json::Value& answer, const char* member, const std::vector<std::string>& names)
{
    if (names.empty()) {
        return Status::kNothing;
    }
    Json::Value& array = answer[member] = Json::Value(Json::arrayValue);
    for (const std::string& name : names) {
        array.append(name);
    }
    return Status::kGood;
}

Status Put(Json::Value& answer, const std::optional<FoundDevice>& device)
{
    if (!device) {
        return Status::kNothing;
    }
    answer["type"] = device->type;
    answer["brand"] = device->brand;
    answer["codeset"] = device->codeset;
    answer["flag"] = device->codeset == kNoCodeset ? 0 : 1;
    return Status::kGood;
}

/// Numbers the signals of an answer in the order in which they first appear.
Json::Value ToJson(const TestRow& row, std::map<std::int64_t, int>& signalNumbers)
{
    Json::Value object;
    object["name"] = row.codeset;
    object["weight"] = Json::Int64{row.weight};
    Json::Value& signals = object["signals"] = Json::Value(Json::arrayValue);
    for (const auto& [key, signal] : row.signals) {
        Json::Value pair(Json::arrayValue);
        pair.append(key);
        pair.append(signalNumbers.try_emplace(signal, static_cast<int>(signalNumbers.size()) + 1)
                        .first->second);
        signals.append(std::move(pair));
    }
    return object;
}

std::string Write(const Json::Value& value)
{
    Json::StreamWriterBuilder builder;
    builder["indentation"] = "";
    builder["emitUTF8"] = true;
    return Json::writeString(builder, value);
}

CloudAnswer HttpOnly(unsigned status)
{
    return {.httpStatus = status, .body = "", .delay = {}};
}

}  // namespace

/// One function for each operation: reads its members, searches the catalogue, fills the answer.
struct Operations {
    CloudService& service;
    const Json::Value& request;
    Json::Value& answer;
    JsonMembers members = JsonMembers(request);
    Catalogue& catalogue = service.m_catalogue;

    Status Version()
    {
        answer["version"] = catalogue.Version();
        return Status::kGood;
    }

    Status DeviceTypes() { return Put(answer, "types", catalogue.DeviceTypes()); }

    Status Brands()
    {
        const std::string type = members.Text("type");
        const std::string prefix = members.Text("prefix");
        return members.AreGood() ? Put(answer, "brands", catalogue.Brands(type, prefix))
                                 : Status::kBadMember;
    }

    Status Models()
    {
        constexpr std::uint32_t kPercent = 100;
        const std::string type = members.Text("type");
        const std::string brand = members.Text("brand");
        const std::string hint = members.Text("hint");
        const std::uint32_t threshold = members.Number("threshold", kPercent);
        if (!members.AreGood()) {
            return Status::kBadMember;
        }
        Json::Value models(Json::arrayValue);
        for (const SimilarModel& model : catalogue.Models(type, brand, hint, threshold)) {
            Json::Value object;
            object["name"] = model.name;
            object["value"] = model.value;
            models.append(std::move(object));
        }
        const bool none = models.empty();
        answer["models"] = std::move(models);
        return none ? Status::kNothing : Status::kGood;
    }

    Status ModelCodesets()
    {
        const std::string type = members.Text("type");
        const std::string brand = members.Text("brand");
        const std::string model = members.Text("model");
        return members.AreGood()
                   ? Put(answer, "codesets", catalogue.ModelCodesets(type, brand, model))
                   : Status::kBadMember;
    }

    Status BrandCodesets()
    {
        const std::string type = members.Text("type");
        const std::string brand = members.Text("brand");
        return members.AreGood() ? Put(answer, "codesets", catalogue.BrandCodesets(type, brand))
                                 : Status::kBadMember;
    }

    Status GuidedTest()
    {
        const std::string type = members.Text("type");
        const std::string brand = members.Text("brand");
        if (!members.AreGood()) {
            return Status::kBadMember;
        }
        // The rows are sorted by weight, so the least used code sets are left out.
        auto rows = catalogue.GuidedTest(type, brand);
        rows.resize(std::min(rows.size(), kTestCodesets));
        Json::Value& codesets = answer["codesets"] = Json::Value(Json::arrayValue);
        std::map<std::int64_t, int> signalNumbers;
        for (const TestRow& row : rows) {
            codesets.append(ToJson(row, signalNumbers));
        }
        return rows.empty() ? Status::kNothing : Status::kGood;
    }

    Status Codeset()
    {
        const std::string name = members.Text("name");
        if (!members.AreGood()) {
            return Status::kBadMember;
        }
        const auto data = catalogue.Codeset(name);
        if (!data) {
            return Status::kNothing;
        }
        answer["data"] = ToBase64(*data);
        // Last: only a download that succeeds counts. A refusal also removes the data, in Answer.
        return service.TakeDownload(request["identity"].asString());
    }

    Status DiscoverCec()
    {
        const std::uint32_t vendor = members.Number("vendorId", kLargestVendor);
        const std::uint32_t address = members.Number("logicalAddr", kLargestAddress);
        const std::string osd = members.Text("osd");
        return members.AreGood() ? Put(answer, catalogue.FindByCec(vendor, address, osd))
                                 : Status::kBadMember;
    }

    Status DiscoverEdid()
    {
        const auto edid = FromBase64(members.Text("edid"));
        if (!members.AreGood() || !edid || edid->size() != kEdidBytes) {
            return Status::kBadMember;
        }
        const std::vector<std::uint8_t> bytes(edid->begin(), edid->end());
        return Put(answer, catalogue.FindByEdid(bytes));
    }
};

namespace {

struct OperationRow {
    std::string_view name;
    Status (Operations::*handle)();
};

constexpr std::array kOperations = std::to_array<OperationRow>({
    {"version", &Operations::Version},
    {"deviceTypes", &Operations::DeviceTypes},
    {"brands", &Operations::Brands},
    {"models", &Operations::Models},
    {"modelCodesets", &Operations::ModelCodesets},
    {"brandCodesets", &Operations::BrandCodesets},
    {"guidedTest", &Operations::GuidedTest},
    {"codeset", &Operations::Codeset},
    {"discoverCec", &Operations::DiscoverCec},
    {"discoverEdid", &Operations::DiscoverEdid},
});

const OperationRow* FindOperation(std::string_view name)
{
    const auto* row = std::ranges::find(kOperations, name, &OperationRow::name);
    return row == kOperations.end() ? nullptr : row;
}

bool HasGoodHead(const Json::Value& request)
{
    JsonMembers head(request);
    head.Text("identity", 1, kIdentityBytes);
    head.Text("vector");
    return head.AreGood();
}

}  // namespace

bool IsOperation(std::string_view name)
{
    return FindOperation(name) != nullptr;
}

CloudService::CloudService(Catalogue& catalogue, ReplyScript script)
    : m_catalogue(catalogue), m_script(std::move(script))
{
}

CloudAnswer CloudService::Answer(std::string_view body)
{
    std::string why;
    const auto request = Orlu::ParseStrictJson(body, why);
    if (!request || !request->isObject() || !(*request)["operation"].isString()) {
        return HttpOnly(kBadRequest);
    }
    const OperationRow* row = FindOperation((*request)["operation"].asString());
    if (row == nullptr) {
        return HttpOnly(kBadRequest);
    }
    const ScriptedReply scripted = m_script.Take(row->name);
    if (scripted.http) {
        return {.httpStatus = *scripted.http, .body = "", .delay = scripted.delay};
    }
    Json::Value answer;
    Status status = scripted.quota ? Status::kQuotaUsedUp : Status::kBadMember;
    if (!scripted.quota && HasGoodHead(*request)) {
        Operations operations{.service = *this, .request = *request, .answer = answer};
        status = (operations.*row->handle)();
    }
    // An operation may have filled the answer before it failed.
    if (status != Status::kGood) {
        answer = Json::Value();
    }
    answer["status"] = static_cast<int>(status);
    CloudAnswer result{.httpStatus = 200, .body = Write(answer), .delay = scripted.delay};
    if (m_catalogue.TakeFailed() || result.body.size() > kAnswerBytes) {
        return HttpOnly(kServerError);
    }
    return result;
}

Status CloudService::TakeDownload(const std::string& identity)
{
    if (m_downloads.size() >= kIdentities && !m_downloads.contains(identity)) {
        return Status::kGood;
    }
    std::int64_t& taken = m_downloads[identity];
    if (taken >= m_catalogue.DownloadQuota()) {
        return Status::kQuotaUsedUp;
    }
    ++taken;
    return Status::kGood;
}

}  // namespace Cloud
