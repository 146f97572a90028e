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

struct LikeModel {
    std::string name;
    unsigned value = 0;  ///< percent
};

/// One code set of a guided test.
struct TestRow {
    std::string codeset;
    std::int64_t weight = 1;
    std::vector<std::pair<int, std::int64_t>> signals;  ///< key number, light (equal: the same)
};

struct FoundDevice {
    std::string type;
    std::string brand;
    std::string codeset;
};

/// The catalogue in its file, read-only. Names are matched without regard to case; what is not
/// there is an empty answer. One thread.
class Catalogue {
public:
    /// Null, and the reason in `why`, for a file that is no catalogue.
    static std::unique_ptr<Catalogue> Open(const std::string& path, std::string& why);

    const std::string& Version() const { return m_versionText; }

    /// Downloads that an identity has.
    std::int64_t DownloadQuota() const { return m_quota; }

    std::vector<std::string> DeviceTypes();
    std::vector<std::string> Brands(std::string_view type, std::string_view prefix);

    /// Best first, and by name among equals.
    std::vector<LikeModel> Models(std::string_view type, std::string_view brand,
                                  std::string_view hint, unsigned threshold);
    std::vector<std::string> ModelCodesets(std::string_view type, std::string_view brand,
                                           std::string_view model);
    std::vector<std::string> BrandCodesets(std::string_view type, std::string_view brand);

    /// An empty brand: all of the type.
    std::vector<TestRow> GuidedTest(std::string_view type, std::string_view brand);

    std::optional<std::string> Codeset(std::string_view name);
    std::optional<FoundDevice> FindByCec(std::uint32_t vendor, unsigned address,
                                         std::string_view osd);

    /// From an EDID's first block, of 128 bytes at least.
    std::optional<FoundDevice> FindByEdid(std::span<const std::uint8_t> edid);

    /// Whether the file could not be read since the last question.
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
