// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <array>
#include <cstdint>

namespace TrellanService {

/// The binary that the library handed over last; the next download overwrites it. One for the
/// process, on the server task.
struct CodesetTransferBuffer {
    static constexpr std::uint32_t kMaxBytes = 1199;  ///< What fits into the blaster's store frame.

    std::array<char, 6> name{};  ///< At most 5 characters, and a zero.
    std::array<std::uint8_t, 1202> data{};
    std::uint32_t size = 0;  ///< Bytes in `data`.
};

}  // namespace TrellanService
