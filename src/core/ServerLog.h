// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "orlu/DPrint.h"

namespace TrellanService {

/// The logger of all sources of the server task.
inline constexpr DPrint kServerLog("TrellanServer");

}  // namespace TrellanService
