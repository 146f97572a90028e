// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>

#include <json/json.h>

namespace Lpm::Devices {

/// The value as text without a line break.
std::string OneLine(const Json::Value& value);

/// An object out of `text`; false, and the reason in `why`, for anything else: too long, too deep,
/// members twice, something behind it.
bool ParseObject(const std::string& text, Json::Value& value, std::string& why);

}  // namespace Lpm::Devices
