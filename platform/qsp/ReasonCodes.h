// SPDX-License-Identifier: Apache-2.0

#pragma once

/// The results of the library's calls. Other codes come unchanged from the post function and the
/// cloud.
namespace QSP::Reason {

inline constexpr int kSuccess = 0;
inline constexpr int kNothingFound = 44;
inline constexpr int kBadArgument = 45;
inline constexpr int kNotStarted = 200;
inline constexpr int kBadSession = 201;
inline constexpr int kBadIndex = 202;
inline constexpr int kBadConfiguration = 203;
inline constexpr int kNoCallback = 204;
/// The cloud's answer is not JSON or lacks what the call asked for.
inline constexpr int kBadAnswer = 205;
inline constexpr int kInternal = 206;

}  // namespace QSP::Reason
