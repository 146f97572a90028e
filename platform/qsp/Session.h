// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "qsp/CloudLink.h"
#include "qsp/GuidedTest.h"

namespace QSP {

/// The code set callback, table[5] of `UEI_register_ir_callbacks`.
using CodesetFunction = int (*)(const char* name, const std::uint8_t* data, std::uint32_t size);

/// One look-up session: the lists retrieved last, one guided test, one discovered device.
///
/// Every call returns 0 or a reason code. A retrieval that fails leaves its list empty. Texts that
/// are handed out are valid until the next call; the code set name of the guided test until the
/// next call of the guided test.
class Session {
public:
    explicit Session(const CloudLink& cloud) : m_cloud(cloud) {}
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    int Version(const char*& text);

    int RetrieveDeviceTypes(std::uint32_t& total);
    int DeviceTypeName(std::uint32_t index, const char*& name) const;
    int RetrieveBrands(const char* type, const char* prefix, std::uint32_t& total);
    int BrandName(std::uint32_t index, const char*& name) const;
    /// In percent; a value outside of 0 to 100 counts as the nearer limit.
    int SetThreshold(std::int32_t threshold);
    int RetrieveModels(std::uint32_t brand, const char* hint, std::uint32_t& total);
    int ModelName(std::uint32_t index, const char*& name) const;
    int ModelFuzzyValue(std::uint32_t index, std::uint32_t& value) const;
    int RetrieveCodesetsByModel(std::uint32_t model, std::uint32_t& total);
    int RetrieveCodesetsByBrand(std::uint32_t brand, std::uint32_t& total);
    int CodesetName(std::uint32_t index, const char*& name) const;

    int RetrieveTestKeys(const char* type, const char* brand, std::uint32_t& total);
    int FirstTestKey(std::int32_t& key);
    int NextTestKey(std::int32_t& key) const;
    int CurrentCodesetName(const char*& name) const;
    int ReportTestResult(std::int32_t failed, std::int32_t& status);
    int CodesetsInTest(std::uint32_t& total) const;
    int CodesetsTested(std::uint32_t& tested) const;

    /// Calls `deliver` with the binary; its result is the result of this call.
    int SendCodeset(const char* name, CodesetFunction deliver) const;

    int DiscoverCEC(std::uint32_t vendorId, std::uint16_t logicalAddr, const char* osd);
    /// An EDID of less than 256 bytes is filled with zeros; an empty or longer one is refused.
    int DiscoverEDID(std::span<const std::uint8_t> edid);
    int DiscoveredDevice(const char*& type, const char*& brand, const char*& codeset,
                         std::uint8_t& flag) const;

private:
    struct Model {
        std::string name;
        std::uint32_t value;
    };
    struct Device {
        std::string type;
        std::string brand;
        std::string codeset;
        std::uint8_t flag = 0;
    };

    int RetrieveCodesets(const char* operation, const Json::Value& request, std::uint32_t& total);
    int Discover(const char* operation, const Json::Value& request);

    const CloudLink& m_cloud;
    std::string m_version;
    std::vector<std::string> m_types;
    /// The request that m_brands or m_models came from.
    std::string m_brandsType;
    std::vector<std::string> m_brands;
    std::string m_modelsType;
    std::string m_modelsBrand;
    std::vector<Model> m_models;
    std::vector<std::string> m_codesets;
    std::int32_t m_threshold = 0;
    std::optional<GuidedTest> m_test;
    bool m_answered = false;
    std::optional<Device> m_device;
};

}  // namespace QSP
