// SPDX-License-Identifier: Apache-2.0

#include "cloud/Catalogue.h"

#include "cloud/Edid.h"
#include "cloud/Schema.h"
#include "cloud/Similarity.h"

#include <algorithm>
#include <array>
#include <charconv>

namespace Cloud {

namespace {

/// U+10FFFF. Appended to a prefix it makes the end of the range of names with that prefix.
constexpr std::string_view kLastCharacter = "\xf4\x8f\xbf\xbf";

constexpr const char* kOneBrand =
    "FROM type JOIN brand ON brand.type = type.id AND type.name = ?1 AND brand.name = ?2 ";

const std::string kModels = std::string("SELECT model.name ") + kOneBrand +
                            "JOIN model ON model.brand = brand.id ORDER BY model.name";

const std::string kModelCodesets = std::string("SELECT codeset.name ") + kOneBrand +
                                   "JOIN model ON model.brand = brand.id AND model.name = ?3 "
                                   "JOIN model_codeset AS used ON used.model = model.id "
                                   "JOIN codeset ON codeset.id = used.codeset ORDER BY used.place";

const std::string kBrandCodesets =
    std::string("SELECT codeset.name ") + kOneBrand +
    "JOIN brand_codeset AS used ON used.brand = brand.id "
    "JOIN codeset ON codeset.id = used.codeset ORDER BY used.weight DESC, codeset.name";

const std::string kBrandTest =
    std::string("SELECT codeset.name, used.weight, signal.ueikey, signal.light ") + kOneBrand +
    "AND brand.guided JOIN brand_codeset AS used ON used.brand = brand.id "
    "JOIN codeset ON codeset.id = used.codeset JOIN signal ON signal.codeset = codeset.id "
    "ORDER BY used.weight DESC, codeset.name, signal.place";

constexpr const char* kTypeTest =
    "SELECT codeset.name, used.weight, signal.ueikey, signal.light FROM "
    "(SELECT brand_codeset.codeset AS codeset, SUM(brand_codeset.weight) AS weight "
    "FROM type JOIN brand ON brand.type = type.id AND type.name = ?1 AND brand.guided "
    "JOIN brand_codeset ON brand_codeset.brand = brand.id GROUP BY brand_codeset.codeset) AS used "
    "JOIN codeset ON codeset.id = used.codeset JOIN signal ON signal.codeset = codeset.id "
    "ORDER BY used.weight DESC, codeset.name, signal.place";

/// The closest row: one with the name before one for any name, then one with the role before one
/// for any role. In descending order the empty text comes last.
constexpr const char* kCec =
    "SELECT type, brand, codeset FROM cec WHERE vendor = ?1 AND osd IN ('', ?2) "
    "AND role IN ('', ?3) ORDER BY osd DESC, role DESC LIMIT 1";

constexpr const char* kEdid =
    "SELECT type, brand, codeset FROM edid WHERE manufacturer = ?1 AND monitor IN ('', ?2) "
    "ORDER BY monitor DESC LIMIT 1";

/// The kind of device at a logical address of the CEC bus.
std::string_view Role(unsigned address)
{
    constexpr std::array<std::string_view, 16> kRoles = {
        "tv",     "recorder", "recorder", "tuner",  "player", "audio", "tuner", "tuner",
        "player", "recorder", "tuner",    "player", "",       "",      "tv",    ""};
    return address < kRoles.size() ? kRoles[address] : std::string_view();
}

std::vector<std::string> Names(Rows rows)
{
    std::vector<std::string> names;
    while (rows.Next()) {
        names.push_back(rows.Text(0));
    }
    return names;
}

std::vector<TestRow> TestRows(Rows rows)
{
    std::vector<TestRow> test;
    while (rows.Next()) {
        std::string codeset = rows.Text(0);
        // The rows of a code set follow each other: the query sorts by its name.
        if (test.empty() || test.back().codeset != codeset) {
            test.push_back({std::move(codeset), std::max<std::int64_t>(1, rows.Integer(1)), {}});
        }
        test.back().signals.emplace_back(static_cast<int>(rows.Integer(2)), rows.Integer(3));
    }
    return test;
}

std::optional<FoundDevice> Found(Rows rows)
{
    if (!rows.Next()) {
        return std::nullopt;
    }
    return FoundDevice{rows.Text(0), rows.Text(1), rows.Text(2)};
}

}  // namespace

Catalogue::Catalogue(std::unique_ptr<Database> database)
    : m_database(std::move(database)),
      m_meta(m_database->Prepare("SELECT value FROM meta WHERE name = ?1")),
      m_types(m_database->Prepare("SELECT name FROM type ORDER BY name")),
      m_brands(m_database->Prepare(kBrandsInRange)),
      m_models(m_database->Prepare(kModels)),
      m_modelCodesets(m_database->Prepare(kModelCodesets)),
      m_brandCodesets(m_database->Prepare(kBrandCodesets)),
      m_brandTest(m_database->Prepare(kBrandTest)),
      m_typeTest(m_database->Prepare(kTypeTest)),
      m_codeset(m_database->Prepare("SELECT data FROM codeset WHERE name = ?1")),
      m_cec(m_database->Prepare(kCec)),
      m_edid(m_database->Prepare(kEdid))
{
}

std::unique_ptr<Catalogue> Catalogue::Open(const std::string& path, std::string& why)
{
    auto database = Database::OpenReadOnly(path, why);
    if (!database) {
        return nullptr;
    }
    std::unique_ptr<Catalogue> catalogue(new Catalogue(std::move(database)));
    catalogue->m_versionText = catalogue->Meta("version");
    const std::string quota = catalogue->Meta("quota");
    const char* end = quota.data() + quota.size();
    const auto [stop, error] = std::from_chars(quota.data(), end, catalogue->m_quota);
    // A statement that could not be prepared, because the file has other tables, fails here too.
    if (catalogue->TakeFailed()) {
        why = catalogue->m_database->Why();
        return nullptr;
    }
    if (error != std::errc{} || stop != end || catalogue->m_versionText.empty()) {
        why = "it has no version or no quota";
        return nullptr;
    }
    return catalogue;
}

std::string Catalogue::Meta(std::string_view name)
{
    auto rows = m_meta.Run(name);
    return rows.Next() ? rows.Text(0) : std::string();
}

std::vector<std::string> Catalogue::DeviceTypes()
{
    return Names(m_types.Run());
}

std::vector<std::string> Catalogue::Brands(std::string_view type, std::string_view prefix)
{
    return Names(m_brands.Run(type, prefix, std::string(prefix).append(kLastCharacter)));
}

std::vector<SimilarModel> Catalogue::Models(std::string_view type, std::string_view brand,
                                            std::string_view hint, unsigned threshold)
{
    std::vector<SimilarModel> models;
    auto rows = m_models.Run(type, brand);
    while (rows.Next()) {
        SimilarModel model{rows.Text(0), 0};
        model.value = Similarity(hint, model.name);
        if (model.value >= threshold) {
            models.push_back(std::move(model));
        }
    }
    // Stable: the query sorts by name, which stays the order among equals.
    std::ranges::stable_sort(models, std::ranges::greater(), &SimilarModel::value);
    return models;
}

std::vector<std::string> Catalogue::ModelCodesets(std::string_view type, std::string_view brand,
                                                  std::string_view model)
{
    return Names(m_modelCodesets.Run(type, brand, model));
}

std::vector<std::string> Catalogue::BrandCodesets(std::string_view type, std::string_view brand)
{
    return Names(m_brandCodesets.Run(type, brand));
}

std::vector<TestRow> Catalogue::GuidedTest(std::string_view type, std::string_view brand)
{
    return TestRows(brand.empty() ? m_typeTest.Run(type) : m_brandTest.Run(type, brand));
}

std::optional<std::string> Catalogue::Codeset(std::string_view name)
{
    auto rows = m_codeset.Run(name);
    return rows.Next() ? std::optional(rows.Text(0)) : std::nullopt;
}

std::optional<FoundDevice> Catalogue::FindByCec(std::uint32_t vendor, unsigned address,
                                                std::string_view osd)
{
    return Found(m_cec.Run(static_cast<std::int64_t>(vendor), osd, Role(address)));
}

std::optional<FoundDevice> Catalogue::FindByEdid(std::span<const std::uint8_t> edid)
{
    const auto monitor = ReadEdid(edid);
    return monitor ? Found(m_edid.Run(monitor->manufacturer, monitor->name)) : std::nullopt;
}

}  // namespace Cloud
