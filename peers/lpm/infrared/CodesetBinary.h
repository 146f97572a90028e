// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace Lpm {

/// A key of a code set: the UEI key number, the group that says how it is sent, and what is sent, in
/// the Linux kernel's scancode convention (raw groups: the number of the stored sequence).
struct CodesetKey {
    std::uint8_t ueiKey;
    std::uint8_t group;
    std::uint32_t scancode;
};

/// A code set as the blaster holds it.
class CodesetBinary {
public:
    /// Nothing, and the reason in `why`, for bytes that are no whole code set of this format.
    static std::optional<CodesetBinary> Parse(std::span<const std::uint8_t> bytes,
                                              std::string& why);

    /// In the order of the binary, which is that of the key numbers.
    const std::vector<CodesetKey>& Keys() const { return m_keys; }

    /// Null if the code set has no such key.
    const CodesetKey* Find(std::uint8_t ueiKey) const;

private:
    std::vector<CodesetKey> m_keys;
};

}  // namespace Lpm
