// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>

#include <json/json.h>

namespace Lpm::Devices {

/// The value as text without a line break.
std::string OneLine(const Json::Value& value);

/// Parses the object in `text`. False, and the reason in `why`, for any other text: too long, too
/// deep, with members twice or with text behind the object.
bool ParseObject(const std::string& text, Json::Value& value, std::string& why);

}  // namespace Lpm::Devices
