// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <optional>
#include <string>
#include <string_view>

#include <json/value.h>

namespace Orlu {

/// Reads an object or an array: UTF-8, at most `Limits::kJsonDepth` deep, each member once, nothing
/// behind it, no single quotes and no bare names. Comments pass. Otherwise nothing, and the reason
/// in `error`. Throws nothing.
std::optional<Json::Value> ParseStrictJson(std::string_view text, std::string& error);

}  // namespace Orlu
