// SPDX-License-Identifier: Apache-2.0

#pragma once

namespace Cloud {

/// Tables of a catalogue. Names are compared without regard to the case of ASCII letters. The
/// indexes have the same order, so the names with a prefix are one range of an index.
inline constexpr const char* kSchema = R"(
CREATE TABLE meta(name TEXT PRIMARY KEY, value TEXT NOT NULL) WITHOUT ROWID;
CREATE TABLE source(id INTEGER PRIMARY KEY, name TEXT NOT NULL, licence TEXT NOT NULL);
CREATE TABLE type(id INTEGER PRIMARY KEY, name TEXT NOT NULL COLLATE NOCASE UNIQUE);
CREATE TABLE brand(id INTEGER PRIMARY KEY, type INTEGER NOT NULL REFERENCES type,
  name TEXT NOT NULL COLLATE NOCASE, guided INTEGER NOT NULL, UNIQUE(type, name));
CREATE TABLE codeset(id INTEGER PRIMARY KEY, name TEXT NOT NULL COLLATE NOCASE UNIQUE,
  source INTEGER NOT NULL REFERENCES source, data BLOB NOT NULL);
CREATE TABLE model(id INTEGER PRIMARY KEY, brand INTEGER NOT NULL REFERENCES brand,
  name TEXT NOT NULL COLLATE NOCASE, UNIQUE(brand, name));
CREATE TABLE model_codeset(model INTEGER NOT NULL, place INTEGER NOT NULL,
  codeset INTEGER NOT NULL, PRIMARY KEY(model, place)) WITHOUT ROWID;
CREATE TABLE brand_codeset(brand INTEGER NOT NULL, codeset INTEGER NOT NULL,
  weight INTEGER NOT NULL, PRIMARY KEY(brand, codeset)) WITHOUT ROWID;
CREATE TABLE signal(codeset INTEGER NOT NULL, place INTEGER NOT NULL, ueikey INTEGER NOT NULL,
  light INTEGER NOT NULL, PRIMARY KEY(codeset, place)) WITHOUT ROWID;
CREATE TABLE cec(vendor INTEGER NOT NULL, osd TEXT NOT NULL COLLATE NOCASE, role TEXT NOT NULL,
  type TEXT NOT NULL, brand TEXT NOT NULL, codeset TEXT NOT NULL,
  PRIMARY KEY(vendor, osd, role)) WITHOUT ROWID;
CREATE TABLE edid(manufacturer TEXT NOT NULL, monitor TEXT NOT NULL COLLATE NOCASE,
  type TEXT NOT NULL, brand TEXT NOT NULL, codeset TEXT NOT NULL,
  PRIMARY KEY(manufacturer, monitor)) WITHOUT ROWID;
)";

/// The brands of a type from ?2 up to ?3, which is excluded. Read from the index alone.
inline constexpr const char* kBrandsInRange =
    "SELECT brand.name FROM type JOIN brand ON brand.type = type.id "
    "WHERE type.name = ?1 AND brand.name >= ?2 AND brand.name < ?3 ORDER BY brand.name";

/// The code set name of a device that is known without a code set.
inline constexpr const char* kNoCodeset = "T9999";

}  // namespace Cloud
