// SPDX-License-Identifier: Apache-2.0

#include <algorithm>
#include <array>
#include <utility>

#include "qsp/Base64.h"
#include "qsp/ReasonCodes.h"
#include "qsp/Session.h"

namespace QSP {

namespace {

constexpr std::size_t kEDIDBytes = 256;

bool ReadSignals(const Json::Value& object, std::vector<GuidedTest::Signal>& signals)
{
    const Json::Value& list = object["signals"];
    if (!list.isArray()) {
        return false;
    }
    for (const Json::Value& pair : list) {
        // The interface hands out keys as signed numbers, in which -1 means that there is none.
        if (!pair.isArray() || pair.size() != 2 || !pair[0].isUInt() || !pair[1].isUInt() ||
            pair[0].asUInt() > INT32_MAX) {
            return false;
        }
        signals.emplace_back(pair[0].asUInt(), pair[1].asUInt());
    }
    return true;
}

bool ReadCandidates(const Json::Value& answer, std::vector<GuidedTest::Candidate>& candidates)
{
    const Json::Value& list = answer["codesets"];
    if (!list.isArray()) {
        return false;
    }
    for (const Json::Value& value : list) {
        GuidedTest::Candidate& candidate = candidates.emplace_back();
        if (!ReadText(value, "name", candidate.name) ||
            !ReadNumber(value, "weight", UINT32_MAX, candidate.weight) ||
            !ReadSignals(value, candidate.signals)) {
            return false;
        }
    }
    return true;
}

std::int32_t KeyOf(const GuidedTest& test)
{
    const std::optional<std::uint32_t> key = test.Key();
    return key ? static_cast<std::int32_t>(*key) : -1;
}

}  // namespace

int Session::RetrieveTestKeys(const char* type, const char* brand, std::uint32_t& total)
{
    total = 0;
    // A retrieval that fails must not leave the test of another device.
    m_test.reset();
    m_answered = false;
    Json::Value request;
    request["type"] = type;
    request["brand"] = brand;
    Json::Value answer;
    const int code = m_cloud.Ask("guidedTest", std::move(request), answer);
    if (code != Reason::kSuccess) {
        return code;
    }
    std::vector<GuidedTest::Candidate> candidates;
    if (!ReadCandidates(answer, candidates)) {
        return Reason::kBadAnswer;
    }
    GuidedTest test(candidates);
    if (!test.Key()) {
        return Reason::kNothingFound;
    }
    m_test = std::move(test);
    total = m_test->KeysTotal();
    return Reason::kSuccess;
}

int Session::FirstTestKey(std::int32_t& key)
{
    if (!m_test) {
        return Reason::kNothingFound;
    }
    // Asking for the first key again starts the test over.
    if (m_answered) {
        m_test->Restart();
        m_answered = false;
    }
    key = KeyOf(*m_test);
    return Reason::kSuccess;
}

int Session::NextTestKey(std::int32_t& key) const
{
    if (!m_test) {
        return Reason::kNothingFound;
    }
    key = KeyOf(*m_test);
    return Reason::kSuccess;
}

int Session::CurrentCodesetName(const char*& name) const
{
    if (!m_test || m_test->CodesetName().empty()) {
        return Reason::kNothingFound;
    }
    name = m_test->CodesetName().c_str();
    return Reason::kSuccess;
}

int Session::ReportTestResult(std::int32_t failed, std::int32_t& status)
{
    status = static_cast<std::int32_t>(GuidedTest::Status::Error);
    if (failed != 0 && failed != 1) {
        return Reason::kBadArgument;
    }
    // Without a test the call succeeds with status -1.
    if (m_test) {
        m_answered = true;
        status = static_cast<std::int32_t>(m_test->Report(failed == 0));
    }
    return Reason::kSuccess;
}

int Session::CodesetsInTest(std::uint32_t& total) const
{
    total = m_test ? m_test->CodesetsTotal() : 0;
    return Reason::kSuccess;
}

int Session::CodesetsTested(std::uint32_t& tested) const
{
    tested = m_test ? m_test->CodesetsTested() : 0;
    return Reason::kSuccess;
}

int Session::SendCodeset(const char* name, CodesetFunction deliver) const
{
    if (deliver == nullptr) {
        return Reason::kNoCallback;
    }
    Json::Value request;
    request["name"] = name;
    Json::Value answer;
    const int code = m_cloud.Ask("codeset", std::move(request), answer);
    if (code != Reason::kSuccess) {
        return code;
    }
    std::string text;
    if (!ReadText(answer, "data", text)) {
        return Reason::kBadAnswer;
    }
    const std::optional<std::vector<std::uint8_t>> data = Base64::Decode(text);
    if (!data) {
        return Reason::kBadAnswer;
    }
    return deliver(name, data->data(), static_cast<std::uint32_t>(data->size()));
}

int Session::DiscoverCEC(std::uint32_t vendorId, std::uint16_t logicalAddr, const char* osd)
{
    Json::Value request;
    request["vendorId"] = vendorId;
    request["logicalAddr"] = logicalAddr;
    request["osd"] = osd;
    return Discover("discoverCec", request);
}

int Session::DiscoverEDID(std::span<const std::uint8_t> edid)
{
    if (edid.empty() || edid.size() > kEDIDBytes) {
        return Reason::kBadArgument;
    }
    std::array<std::uint8_t, kEDIDBytes> filled{};
    std::copy(edid.begin(), edid.end(), filled.begin());
    Json::Value request;
    request["edid"] = Base64::Encode(filled);
    return Discover("discoverEdid", request);
}

int Session::Discover(const char* operation, const Json::Value& request)
{
    m_device.reset();
    Json::Value answer;
    const int code = m_cloud.Ask(operation, request, answer);
    if (code != Reason::kSuccess) {
        return code;
    }
    Device device;
    std::uint32_t flag = 0;
    if (!ReadText(answer, "type", device.type) || !ReadText(answer, "brand", device.brand) ||
        !ReadText(answer, "codeset", device.codeset) ||
        !ReadNumber(answer, "flag", UINT8_MAX, flag)) {
        return Reason::kBadAnswer;
    }
    device.flag = static_cast<std::uint8_t>(flag);
    m_device = std::move(device);
    return Reason::kSuccess;
}

int Session::DiscoveredDevice(const char*& type, const char*& brand, const char*& codeset,
                              std::uint8_t& flag) const
{
    if (!m_device) {
        return Reason::kNothingFound;
    }
    type = m_device->type.c_str();
    brand = m_device->brand.c_str();
    codeset = m_device->codeset.c_str();
    flag = m_device->flag;
    return Reason::kSuccess;
}

}  // namespace QSP
