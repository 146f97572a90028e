// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "cloud/Sqlite.h"

namespace Cloud {

struct SimilarModel {
    std::string name;
    unsigned value = 0;  ///< percent
};

/// One code set of a guided test.
struct TestRow {
    std::string codeset;
    std::int64_t weight = 1;
    std::vector<std::pair<int, std::int64_t>>
        signals;  ///< key number, signal id (equal: same signal)
};

struct FoundDevice {
    std::string type;
    std::string brand;
    std::string codeset;
};

/// A catalogue file, read-only. Names are compared without regard to case. A search without a match
/// returns an empty answer. For one thread.
class Catalogue {
public:
    /// Null, and the reason in `why`, if the file is not a catalogue.
    static std::unique_ptr<Catalogue> Open(const std::string& path, std::string& why);

    const std::string& Version() const { return m_versionText; }

    /// Downloads that each identity may make.
    std::int64_t DownloadQuota() const { return m_quota; }

    std::vector<std::string> DeviceTypes();
    std::vector<std::string> Brands(std::string_view type, std::string_view prefix);

    /// The most similar first; equal ones by name.
    std::vector<SimilarModel> Models(std::string_view type, std::string_view brand,
                                     std::string_view hint, unsigned threshold);
    std::vector<std::string> ModelCodesets(std::string_view type, std::string_view brand,
                                           std::string_view model);
    std::vector<std::string> BrandCodesets(std::string_view type, std::string_view brand);

    /// An empty brand means all brands of the type.
    std::vector<TestRow> GuidedTest(std::string_view type, std::string_view brand);

    std::optional<std::string> Codeset(std::string_view name);
    std::optional<FoundDevice> FindByCec(std::uint32_t vendor, unsigned address,
                                         std::string_view osd);

    /// `edid` has at least the 128 bytes of the first block.
    std::optional<FoundDevice> FindByEdid(std::span<const std::uint8_t> edid);

    /// Whether reading the file has failed since the last call.
    bool TakeFailed() { return m_database->TakeFailed(); }

private:
    explicit Catalogue(std::unique_ptr<Database> database);

    std::string Meta(std::string_view name);

    std::unique_ptr<Database> m_database;
    Statement m_meta;
    Statement m_types;
    Statement m_brands;
    Statement m_models;
    Statement m_modelCodesets;
    Statement m_brandCodesets;
    Statement m_brandTest;
    Statement m_typeTest;
    Statement m_codeset;
    Statement m_cec;
    Statement m_edid;
    std::string m_versionText;
    std::int64_t m_quota = 0;
};

}  // namespace Cloud
