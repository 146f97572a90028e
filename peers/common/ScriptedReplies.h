// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <limits>
#include <vector>

namespace Peers {

/// An entry that is never used up.
inline constexpr std::uint32_t kForever = std::numeric_limits<std::uint32_t>::max();

/// A reply of a peer's script, by what it answers.
template <class Key, class Reply>
struct ScriptedEntry {
    Key key{};
    std::uint32_t times = kForever;
    Reply reply{};
};

/// The first entry for `key` that is not used up; uses up one of its times. Without one the normal
/// reply, which has no members set.
template <class Key, class Reply, class Wanted>
Reply TakeReply(std::vector<ScriptedEntry<Key, Reply>>& entries, const Wanted& key)
{
    for (auto& entry : entries) {
        if (entry.key == key && entry.times != 0) {
            entry.times -= entry.times == kForever ? 0 : 1;
            return entry.reply;
        }
    }
    return {};
}

}  // namespace Peers
