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

/// What a catalogue is made of, before it is written. References are positions in `codesets`.
/// The maps are sorted, so that the order in which things came leaves no trace.
struct Collection {
    struct Source {
        std::string name;
        std::string licence;
    };

    struct Codeset {
        std::string name;  ///< empty: to be named by its content
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
        std::vector<std::size_t> codesets = {};    ///< of no known model
    };

    /// A device that announces itself.
    struct AnnouncedDevice {
        std::string type;
        std::string brand;
        std::string codeset;  ///< empty: the brand's commonest, if it has any
    };

    /// The code set with that binary, new or one that is there already; a name is for new ones.
    std::size_t AddCodeset(Codeset codeset);

    /// Names those without one, by a letter of the type and digits that the content gives.
    void NameCodesets();

    std::string version;
    std::int64_t quota = 0;  ///< 0: not said
    std::vector<Source> sources;
    std::vector<Codeset> codesets;
    std::map<std::string, std::size_t> byName;
    std::map<std::pair<char, std::string>, std::size_t> byBinary;
    std::map<std::pair<std::string, std::string>, Brand> brands;  ///< by type and small name
    /// By vendor, name on the bus, role; and by manufacturer, monitor.
    std::map<std::tuple<std::uint32_t, std::string, std::string>, AnnouncedDevice> cec;
    std::map<std::pair<std::string, std::string>, AnnouncedDevice> edid;
};

/// ASCII letters only, as the catalogue compares.
std::string SmallLetters(std::string_view text);

/// The first eight bytes of the content's SHA-256.
std::uint64_t ContentHash(std::string_view bytes);

}  // namespace Cloud
