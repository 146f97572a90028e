// SPDX-License-Identifier: Apache-2.0

#pragma once

namespace TrellanService {

/// The service's own resources at the local API.
inline constexpr const char* kControlResource = "/remote/integration";
inline constexpr const char* kBrandListResource = "/remote/integration/brandList";
inline constexpr const char* kDirectEntryResource = "/remote/integration/directEntry";
inline constexpr const char* kResourceLabel = "trellan";

/// The product's resources that the service uses.
inline constexpr const char* kSystemInfoResource = "/system/info";
inline constexpr const char* kStagingResource = "/payload/cfg";
inline constexpr const char* kPublishResource = "/payload/publish";
inline constexpr const char* kNetworkResource = "/network/status";

}  // namespace TrellanService
