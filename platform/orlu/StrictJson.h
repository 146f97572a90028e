// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <optional>
#include <string>
#include <string_view>

#include <json/value.h>

namespace Orlu {

/// Reads an object or an array: UTF-8, at most `Limits::kJsonDepth` deep, each member once, no text
/// after it, no single quotes and no names without quotes. Comments are accepted. Otherwise returns
/// nothing, with the reason in `error`. Never throws.
std::optional<Json::Value> ParseStrictJson(std::string_view text, std::string& error);

}  // namespace Orlu
