// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "infrared/Protocols.h"

namespace Lpm {

/// A key of a code set: the UEI key number, the number of its group and the scancode in the Linux
/// kernel's convention. In a raw group the scancode is the number of the stored sequence.
struct CodesetKey {
    std::uint8_t ueiKey = 0;
    std::uint8_t group = 0;
    std::uint32_t scancode = 0;

    friend bool operator==(const CodesetKey&, const CodesetKey&) = default;
};

/// A stored signal of no known protocol: numbers of the group's durations, a mark first and a space
/// last.
struct RawSequence {
    std::vector<std::uint8_t> press;
    std::vector<std::uint8_t> repeat;  ///< empty: `press` again

    friend bool operator==(const RawSequence&, const RawSequence&) = default;
};

/// How the keys of a group are sent.
struct CodesetGroup {
    Protocol protocol = Protocol::kRaw;
    std::uint8_t carrierKHz = 0;     ///< 0: the protocol's carrier; raw has none
    std::uint8_t minimumFrames = 0;  ///< 0: the protocol's number
    std::vector<std::uint16_t> rawDurationsUs = {};
    std::vector<RawSequence> rawSequences = {};

    friend bool operator==(const CodesetGroup&, const CodesetGroup&) = default;
};

/// A code set as the blaster stores it. Each key of a binary that `Parse` accepts can be sent: each
/// group has a known protocol, each scancode fits the protocol, and each frame lasts at least
/// `kMinimumFrameUs`.
class CodesetBinary {
public:
    /// The size limit of a store frame's data.
    static constexpr std::size_t kMaximumBytes = 1199;
    static constexpr std::uint32_t kMinimumFrameUs = 10000;

    /// Nothing, and the reason in `why`, for bytes that are not a complete code set of this format.
    static std::optional<CodesetBinary> Parse(std::span<const std::uint8_t> bytes,
                                              std::string& why);

    /// The binary of these groups and keys, which may be in any order. Nothing, and the reason in
    /// `why`, if `Parse` would not accept the binary.
    static std::optional<std::vector<std::uint8_t>> Compose(std::span<const CodesetGroup> groups,
                                                            std::span<const CodesetKey> keys,
                                                            std::string& why);

    /// In the order of the key numbers.
    const std::vector<CodesetKey>& Keys() const { return m_keys; }

    const std::vector<CodesetGroup>& Groups() const { return m_groups; }

    /// Null if the code set has no such key.
    const CodesetKey* Find(std::uint8_t ueiKey) const;

private:
    std::vector<CodesetGroup> m_groups;
    std::vector<CodesetKey> m_keys;
};

}  // namespace Lpm
