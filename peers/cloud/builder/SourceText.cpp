// SPDX-License-Identifier: Apache-2.0

#include "cloud/builder/SourceText.h"

#include "lpm/codesets/CodesetText.h"
#include "orlu/StrictJson.h"
#include "orlu/SystemUtils.h"

#include <fmt/format.h>
#include <json/writer.h>

#include <algorithm>
#include <charconv>
#include <optional>

namespace Cloud {

namespace {

constexpr std::size_t kNameBytes = 64;
constexpr std::uint32_t kLargestVendor = 0xffffff;

/// Reads one source. Keeps the first fault; after a fault the collection is not used.
class Reader {
public:
    Reader(const std::string& folder, Collection& collection, std::string& why)
        : m_folder(folder), m_collection(collection), m_why(why)
    {
        m_why.clear();
    }

    bool Read(const Json::Value& root)
    {
        m_collection.sources.push_back({Text(root, "source"), Text(root, "licence")});
        if (m_collection.version.empty()) {
            m_collection.version = Text(root, "version", true);
        }
        if (root["quota"].isUInt() && m_collection.quota == 0) {
            m_collection.quota = root["quota"].asUInt();
        }
        for (const Json::Value& codeset : List(root, "codesets")) {
            ReadCodeset(codeset);
        }
        for (const Json::Value& brand : List(root, "brands")) {
            ReadBrand(brand);
        }
        for (const Json::Value& device : List(root, "cec")) {
            ReadCec(device);
        }
        for (const Json::Value& device : List(root, "edid")) {
            ReadEdid(device);
        }
        return m_why.empty();
    }

private:
    void Fault(const std::string& what)
    {
        if (m_why.empty()) {
            m_why = what;
        }
    }

    std::string Text(const Json::Value& object, const char* name, bool mayBeAbsent = false)
    {
        const Json::Value& value = object[name];
        if (value.isNull() && mayBeAbsent) {
            return {};
        }
        std::string text = value.isString() ? value.asString() : std::string();
        if (text.empty() ? !(mayBeAbsent && value.isString()) : text.size() > kNameBytes) {
            Fault(fmt::format("'{}' is no text of 1 to {} bytes", name, kNameBytes));
        }
        return text;
    }

    /// A list of objects or texts. An absent list is empty.
    const Json::Value& List(const Json::Value& object, const char* name)
    {
        static const Json::Value kNone(Json::arrayValue);
        const Json::Value& value = object[name];
        const bool good = value.isArray() && std::ranges::all_of(value, [](const auto& entry) {
                              return entry.isObject() || entry.isString();
                          });
        if (!good && !value.isNull()) {
            Fault(fmt::format("'{}' is no list of objects", name));
        }
        return good ? value : kNone;
    }

    bool IsObject(const Json::Value& value, const char* what)
    {
        if (!value.isObject()) {
            Fault(fmt::format("a {} is no object", what));
        }
        return value.isObject();
    }

    std::string Compile(const std::string& text, const std::string& what)
    {
        std::string why;
        const auto binary = Lpm::CompileCodeset(text, why);
        if (!binary) {
            Fault(what + ": " + why);
            return {};
        }
        return {binary->begin(), binary->end()};
    }

    std::string CompileGroups(const Json::Value& object, const std::string& what)
    {
        Json::Value codeset;
        codeset["groups"] = object["groups"];
        Json::StreamWriterBuilder builder;
        builder["indentation"] = "";
        return Compile(Json::writeString(builder, codeset), what);
    }

    void ReadCodeset(const Json::Value& object)
    {
        if (!IsObject(object, "code set")) {
            return;
        }
        Collection::Codeset codeset{.name = Text(object, "name"),
                                    .type = Text(object, "type"),
                                    .binary = "",
                                    .source = m_collection.sources.size() - 1};
        const std::string file = Text(object, "file", true);
        if (file.empty()) {
            codeset.binary = CompileGroups(object, codeset.name);
        } else if (const auto text = SystemUtils::ReadFile(m_folder + "/" + file)) {
            codeset.binary = Compile(*text, file);
        } else {
            Fault(file + ": it cannot be read");
        }
        if (m_collection.byName.contains(codeset.name)) {
            Fault(codeset.name + " is there twice");
        }
        m_collection.AddCodeset(std::move(codeset));
    }

    /// Adds the code set that `value` names or contains.
    void AddReference(const Json::Value& value, const std::string& type, const std::string& owner,
                      std::vector<std::size_t>& codesets)
    {
        std::optional<std::size_t> place;
        if (value.isString()) {
            const auto known = m_collection.byName.find(value.asString());
            if (known == m_collection.byName.end()) {
                Fault(fmt::format("{}: there is no {}", owner, value.asString()));
                return;
            }
            place = known->second;
        } else {
            std::string binary = CompileGroups(value, owner);
            place = m_collection.AddCodeset({.name = "",
                                             .type = type,
                                             .binary = std::move(binary),
                                             .source = m_collection.sources.size() - 1});
        }
        if (std::ranges::find(codesets, *place) == codesets.end()) {
            codesets.push_back(*place);
        }
    }

    void ReadBrand(const Json::Value& object)
    {
        if (!IsObject(object, "brand")) {
            return;
        }
        const std::string type = Text(object, "type");
        const std::string name = Text(object, "name");
        Collection::Brand& brand =
            m_collection.brands.try_emplace({type, SmallLetters(name)}, Collection::Brand{name})
                .first->second;
        if (object["guided"].isBool()) {
            brand.guided = object["guided"].asBool();
        }
        for (const Json::Value& entry : List(object, "models")) {
            if (!IsObject(entry, "model")) {
                return;
            }
            const std::string modelName = Text(entry, "name");
            Collection::Model& model =
                brand.models.try_emplace(SmallLetters(modelName), Collection::Model{modelName, {}})
                    .first->second;
            const std::string fullName = std::string(name).append(" ").append(modelName);
            for (const Json::Value& codeset : List(entry, "codesets")) {
                AddReference(codeset, type, fullName, model.codesets);
            }
        }
        for (const Json::Value& codeset : List(object, "codesets")) {
            AddReference(codeset, type, name, brand.codesets);
        }
    }

    Collection::AnnouncedDevice ReadAnnouncedDevice(const Json::Value& object)
    {
        Collection::AnnouncedDevice known{.type = Text(object, "type"),
                                          .brand = Text(object, "brand"),
                                          .codeset = Text(object, "codeset", true)};
        if (!known.codeset.empty() && !m_collection.byName.contains(known.codeset)) {
            Fault(fmt::format("{}: there is no {}", known.brand, known.codeset));
        }
        return known;
    }

    void ReadCec(const Json::Value& object)
    {
        if (!IsObject(object, "device")) {
            return;
        }
        const std::string text = Text(object, "vendor");
        std::uint32_t vendor = 0;
        const char* end = text.data() + text.size();
        const bool hasPrefix = text.starts_with("0x");
        const auto [stop, error] =
            std::from_chars(text.data() + (hasPrefix ? 2 : 0), end, vendor, hasPrefix ? 16 : 10);
        if (error != std::errc{} || stop != end || vendor > kLargestVendor) {
            Fault(fmt::format("'{}' is no vendor", text));
        }
        m_collection.cec.try_emplace(
            {vendor, SmallLetters(Text(object, "osd", true)), Text(object, "role", true)},
            ReadAnnouncedDevice(object));
    }

    void ReadEdid(const Json::Value& object)
    {
        if (!IsObject(object, "device")) {
            return;
        }
        m_collection.edid.try_emplace(
            {Text(object, "manufacturer"), SmallLetters(Text(object, "monitor", true))},
            ReadAnnouncedDevice(object));
    }

    const std::string& m_folder;
    Collection& m_collection;
    std::string& m_why;
};

}  // namespace

bool AddSource(std::string_view text, const std::string& folder, Collection& collection,
               std::string& why)
{
    const auto root = Orlu::ParseStrictJson(text, why);
    if (!root) {
        return false;
    }
    if (!root->isObject()) {
        why = "it is no object";
        return false;
    }
    return Reader(folder, collection, why).Read(*root);
}

}  // namespace Cloud
