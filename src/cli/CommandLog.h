// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "orlu/DPrint.h"

namespace TrellanService {

/// The logger of all sources of the command line.
inline constexpr DPrint kCommandLog("TrellanService");

}  // namespace TrellanService
