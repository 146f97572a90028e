// SPDX-License-Identifier: Apache-2.0

#include "cloud/builder/CatalogueWriter.h"

#include "cloud/Schema.h"
#include "cloud/Sqlite.h"
#include "cloud/builder/Questions.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>
#include <set>

namespace Cloud {

namespace {

constexpr const char* kDefaultVersion = "1";
constexpr std::int64_t kDefaultQuota = 1000;

std::int64_t Id(std::size_t place)
{
    return static_cast<std::int64_t>(place) + 1;
}

/// Fills an empty database table by table, each in a fixed order, so that equal collections give
/// equal bytes.
class Writer {
public:
    Writer(Database& database, const Collection& collection)
        : m_database(database), m_collection(collection)
    {
    }

    void WriteAll()
    {
        // Without a journal: the file is temporary until it is complete and synced.
        m_database.Execute("PRAGMA journal_mode=OFF; PRAGMA synchronous=OFF; BEGIN");
        m_database.Execute(kSchema);
        WriteMeta();
        WriteCodesets();
        WriteBrands();
        WriteAnnouncedDevices();
        m_database.Execute("COMMIT");
    }

private:
    template <typename... Values>
    static void Insert(Statement& statement, const Values&... values)
    {
        statement.Run(values...).Next();
    }

    void WriteMeta()
    {
        auto meta = m_database.Prepare("INSERT INTO meta VALUES(?, ?)");
        Insert(meta, "version",
               m_collection.version.empty() ? kDefaultVersion : m_collection.version);
        Insert(meta, "quota",
               std::to_string(m_collection.quota == 0 ? kDefaultQuota : m_collection.quota));
        auto source = m_database.Prepare("INSERT INTO source VALUES(?, ?, ?)");
        for (std::size_t i = 0; i < m_collection.sources.size(); ++i) {
            Insert(source, Id(i), m_collection.sources[i].name, m_collection.sources[i].licence);
        }
    }

    /// In the order of their names, so that ids do not depend on the order of the sources.
    void WriteCodesets()
    {
        auto codeset = m_database.Prepare("INSERT INTO codeset VALUES(?, ?, ?, CAST(? AS BLOB))");
        auto signal = m_database.Prepare("INSERT INTO signal VALUES(?, ?, ?, ?)");
        m_ids.resize(m_collection.codesets.size());
        std::int64_t id = 0;
        for (const auto& [name, place] : m_collection.byName) {
            const Collection::Codeset& entry = m_collection.codesets[place];
            m_ids[place] = ++id;
            Insert(codeset, id, name, Id(entry.source), entry.binary);
            std::int64_t order = 0;
            for (const Question& question : Questions(entry.type, entry.binary)) {
                Insert(signal, id, ++order, std::int64_t{question.ueiKey}, question.signal);
            }
        }
    }

    void WriteBrands()
    {
        auto type = m_database.Prepare("INSERT INTO type VALUES(?, ?)");
        auto brand = m_database.Prepare("INSERT INTO brand VALUES(?, ?, ?, ?)");
        auto used = m_database.Prepare("INSERT INTO brand_codeset VALUES(?, ?, ?)");
        std::string lastType;
        std::int64_t typeId = 0;
        std::int64_t brandId = 0;
        for (const auto& [key, entry] : m_collection.brands) {
            if (key.first != lastType) {
                lastType = key.first;
                Insert(type, ++typeId, lastType);
            }
            Insert(brand, ++brandId, typeId, entry.name, std::int64_t{entry.guided ? 1 : 0});
            for (const auto& [place, weight] : Weights(entry)) {
                Insert(used, brandId, m_ids[place], weight);
            }
            WriteModels(brandId, entry);
        }
    }

    void WriteModels(std::int64_t brandId, const Collection::Brand& brand)
    {
        auto model = m_database.Prepare("INSERT INTO model VALUES(?, ?, ?)");
        auto used = m_database.Prepare("INSERT INTO model_codeset VALUES(?, ?, ?)");
        for (const auto& [key, entry] : brand.models) {
            Insert(model, ++m_modelId, brandId, entry.name);
            std::int64_t order = 0;
            for (const std::size_t place : entry.codesets) {
                Insert(used, m_modelId, ++order, m_ids[place]);
            }
        }
    }

    /// The number of models that use each code set; 1 for a code set without a known model.
    static std::map<std::size_t, std::int64_t> Weights(const Collection::Brand& brand)
    {
        std::map<std::size_t, std::int64_t> weights;
        for (const auto& [name, model] : brand.models) {
            for (const std::size_t place : model.codesets) {
                ++weights[place];
            }
        }
        for (const std::size_t place : brand.codesets) {
            weights.try_emplace(place, 1);
        }
        return weights;
    }

    /// The device's code set, or else the one that most models of its brand use.
    std::string CodesetOf(const Collection::AnnouncedDevice& known) const
    {
        if (!known.codeset.empty()) {
            return known.codeset;
        }
        const auto brand = m_collection.brands.find({known.type, SmallLetters(known.brand)});
        std::string best = kNoCodeset;
        std::int64_t bestWeight = 0;
        if (brand == m_collection.brands.end()) {
            return best;
        }
        for (const auto& [place, weight] : Weights(brand->second)) {
            const std::string& name = m_collection.codesets[place].name;
            if (weight > bestWeight || (weight == bestWeight && name < best)) {
                best = name;
                bestWeight = weight;
            }
        }
        return best;
    }

    void WriteAnnouncedDevices()
    {
        auto cec = m_database.Prepare("INSERT INTO cec VALUES(?, ?, ?, ?, ?, ?)");
        for (const auto& [key, known] : m_collection.cec) {
            Insert(cec, std::int64_t{std::get<0>(key)}, std::get<1>(key), std::get<2>(key),
                   known.type, known.brand, CodesetOf(known));
        }
        auto edid = m_database.Prepare("INSERT INTO edid VALUES(?, ?, ?, ?, ?)");
        for (const auto& [key, known] : m_collection.edid) {
            Insert(edid, key.first, key.second, known.type, known.brand, CodesetOf(known));
        }
    }

    Database& m_database;
    const Collection& m_collection;
    std::vector<std::int64_t> m_ids;
    std::int64_t m_modelId = 0;
};

bool Sync(const std::string& path, int flags)
{
    const int fd = open(path.c_str(), flags | O_CLOEXEC);
    const bool done = fd >= 0 && fsync(fd) == 0;
    if (fd >= 0) {
        close(fd);
    }
    return done;
}

std::string Folder(const std::string& path)
{
    const std::size_t slash = path.rfind('/');
    return slash == std::string::npos ? "." : path.substr(0, slash + 1);
}

bool WriteTemporary(const Collection& collection, const std::string& path, std::string& why)
{
    const auto database = Database::Create(path, why);
    if (!database) {
        return false;
    }
    Writer(*database, collection).WriteAll();
    if (database->TakeFailed()) {
        why = database->Why();
        return false;
    }
    return true;
}

}  // namespace

bool WriteCatalogue(Collection& collection, const std::string& path, std::string& why)
{
    collection.NameCodesets();
    // Beside the target: rename works only within a file system.
    const std::string temporary = path + ".tmp." + std::to_string(getpid());
    // A file of a process with the same number that was killed.
    std::remove(temporary.c_str());
    bool done = WriteTemporary(collection, temporary, why);
    if (done && (!Sync(temporary, O_RDONLY) || std::rename(temporary.c_str(), path.c_str()) != 0)) {
        why = std::strerror(errno);
        done = false;
    }
    if (!done) {
        std::remove(temporary.c_str());
        return false;
    }
    // Makes the rename durable. If it fails, the file itself is still complete.
    Sync(Folder(path), O_RDONLY | O_DIRECTORY);
    return true;
}

}  // namespace Cloud
