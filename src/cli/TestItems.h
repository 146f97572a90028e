// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <array>
#include <cstdint>

namespace TrellanService {

/// What `trs store_codeset` loads: the code set of the television that the repository's devices
/// know, with the rest of a remote control's keys. Opaque to the service.
inline constexpr const char* kTestCodesetName = "T2051";
extern const std::array<std::uint8_t, 356> kTestCodeset;

/// What `trs find_edid_dev` sends: the two blocks of a television of SAMSUNG with 1920x1080 at
/// 60 Hz and HDMI at the physical address 1.0.0.0. Made up; no product's own.
extern const std::array<std::uint8_t, 256> kTestEdid;

}  // namespace TrellanService
