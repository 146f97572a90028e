// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <tuple>
#include <utility>
#include <vector>

namespace Cloud {

/// The content of a catalogue before it is written. Code sets are referred to by their position in
/// `codesets`. The maps are sorted, so the result does not depend on the order of the sources.
struct Collection {
    struct Source {
        std::string name;
        std::string licence;
    };

    struct Codeset {
        std::string name;  ///< empty: NameCodesets derives it from the content
        std::string type;
        std::string binary;
        std::size_t source = 0;
    };

    struct Model {
        std::string name;
        std::vector<std::size_t> codesets;  ///< best first
    };

    struct Brand {
        std::string name;
        bool guided = true;
        std::map<std::string, Model> models = {};  ///< by the name in small letters
        std::vector<std::size_t> codesets = {};    ///< code sets without a known model
    };

    /// A device that is recognised by its CEC data or its EDID.
    struct AnnouncedDevice {
        std::string type;
        std::string brand;
        std::string codeset;  ///< empty: the brand's most used one, if it has any
    };

    /// Adds a code set and returns its position. A code set without a name that is there already,
    /// with the same type letter, is not added again.
    std::size_t AddCodeset(Codeset codeset);

    /// Names the code sets that have no name, by a letter for the type and a number that depends on
    /// the content.
    void NameCodesets();

    std::string version;
    std::int64_t quota = 0;  ///< 0: no source gives it
    std::vector<Source> sources;
    std::vector<Codeset> codesets;
    std::map<std::string, std::size_t> byName;
    std::map<std::pair<char, std::string>, std::size_t> byBinary;
    std::map<std::pair<std::string, std::string>, Brand>
        brands;  ///< by type, name in small letters
    /// By vendor, name on the bus, role; and by manufacturer, monitor.
    std::map<std::tuple<std::uint32_t, std::string, std::string>, AnnouncedDevice> cec;
    std::map<std::pair<std::string, std::string>, AnnouncedDevice> edid;
};

/// Converts ASCII letters only, as the catalogue compares names.
std::string SmallLetters(std::string_view text);

/// The first eight bytes of the content's SHA-256.
std::uint64_t ContentHash(std::string_view bytes);

}  // namespace Cloud
