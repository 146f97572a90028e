// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

/// The blaster's byte protocol. Frames and replies are strings of raw bytes, zeros included.
///
/// A frame towards the blaster:
///
///     0, 1   number of bytes after these two, high byte first
///     2      command
///     3 …    arguments; a device number takes two bytes, high byte first
///
/// A reply:
///
///     0      number of bytes after this one
///     1      status, 0 for success
///     2 …    payload
namespace TrellanService::BlasterFrames {

/// Data bytes that one store frame can carry.
inline constexpr std::size_t kMaxStoreBytes = 1199;

/// The status of a reply that is too short to have one.
inline constexpr std::uint8_t kNoStatus = 0xFF;

std::string EndKey();                                                         // 0x00
std::string Key(std::uint16_t device, std::uint8_t key, std::uint8_t flag);   // 0x01
std::string KeyMap(std::uint16_t device);                                     // 0x02
std::string Reset();                                                          // 0x09
std::string Version();                                                        // 0x0B
std::string Delete(std::uint16_t device);                                     // 0x0C
std::string List();                                                           // 0x11
std::string Store(std::uint16_t device, std::span<const std::uint8_t> data);  // 0x22

/// The reply of success without payload: 01 00.
std::string Success();

/// `kNoStatus` for a reply under two bytes.
std::uint8_t Status(std::string_view reply);

/// The UEI keys of a key map reply. If the count promises more than the reply holds, those that are
/// there.
std::vector<std::uint8_t> KeysOf(std::string_view reply);

/// The device numbers of a list reply. If the count promises more than the reply holds, those that
/// are there in full.
std::vector<std::uint16_t> DevicesOf(std::string_view reply);

}  // namespace TrellanService::BlasterFrames
