// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "orlu/DPrint.h"

namespace TrellanService {

/// The one logger of this module's sources.
inline constexpr DPrint kCodesetLog("TrellanServiceCodesetHandler");

}  // namespace TrellanService
