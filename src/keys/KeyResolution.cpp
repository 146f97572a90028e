// SPDX-License-Identifier: Apache-2.0

#include "keys/KeyResolution.h"

#include <algorithm>
#include <array>
#include <optional>

#include "codesets/AmbiguousKeyMap.h"
#include "keys/KeyTables.h"

namespace TrellanService {

namespace {

using namespace IpcProtocol;
using namespace UEIKeyNamesPB;

struct Candidate {
    std::uint32_t mask = 0;  // the bit that the code set must have; 0: fits every code set
    std::uint8_t key = kInvalidUEIKey;
};

// The first candidate that fits is the result. An element that is not filled has mask 0, so it fits
// every code set and gives no key.
using Cell = std::array<Candidate, 4>;

// `ReadCell` would take a key without a bit as held by every code set. The `throw` makes such a
// table a compile error.
consteval Candidate IfHeld(ueikey key)
{
    return AmbiguousKeyBit(key) != 0
               ? Candidate{AmbiguousKeyBit(key), static_cast<std::uint8_t>(key)}
               : throw key;
}

consteval Candidate Always(ueikey key)
{
    return {0, static_cast<std::uint8_t>(key)};
}

enum Column { kColumnADMR, kColumnCS, kColumnH, kColumnN, kColumnT, kColumnV, kColumnY, kColumns };

struct ResolutionRow {
    std::uint32_t orluKey;
    std::array<Cell, kColumns> cells;
};

constexpr std::array<Cell, kColumns> InAllClasses(const Cell& cell)
{
    return {cell, cell, cell, cell, cell, cell, cell};
}

constexpr Cell kNone = {};
constexpr Cell kStop = {Always(kKey_STOP)};
constexpr Cell kDisplay = {Always(kKey_DISPLAY)};
constexpr Cell kSourceMenu = {Always(kKey_SOURCE_MENU)};
constexpr Cell kLeft = {Always(kKey_CURSOR_LEFT)};
constexpr Cell kLeftOrBack = {IfHeld(kKey_CURSOR_LEFT), IfHeld(kKey_BACK)};
constexpr Cell kLastOrBack = {IfHeld(kKey_LAST_CHANNEL), IfHeld(kKey_BACK)};
constexpr Cell kMenuOrServices = {IfHeld(kKey_SOURCE_MENU), IfHeld(kKey_SERVICES)};
constexpr Cell kReverse = {IfHeld(kKey_REWIND), IfHeld(kKey_SKIP_REVERSE)};
constexpr Cell kReverseOrReplay = {IfHeld(kKey_REWIND), IfHeld(kKey_INSTANT_REPLAY),
                                   IfHeld(kKey_SKIP_REVERSE)};
constexpr Cell kForward = {IfHeld(kKey_FAST_FORWARD), IfHeld(kKey_SKIP_FWD)};
constexpr Cell kForwardOrQuick = {IfHeld(kKey_FAST_FORWARD), IfHeld(kKey_QUICK_SKIP),
                                  IfHeld(kKey_SKIP_FWD)};
constexpr Cell kReplayFirst = {IfHeld(kKey_INSTANT_REPLAY), IfHeld(kKey_SKIP_REVERSE)};
constexpr Cell kReplayLast = {IfHeld(kKey_SKIP_REVERSE), IfHeld(kKey_INSTANT_REPLAY)};
constexpr Cell kQuickFirst = {IfHeld(kKey_QUICK_SKIP), IfHeld(kKey_SKIP_FWD)};
constexpr Cell kQuickLast = {IfHeld(kKey_SKIP_FWD), IfHeld(kKey_QUICK_SKIP)};
constexpr Cell kHomeFirst = {IfHeld(kKey_HOME), IfHeld(kKey_WIDGETS_APPS),
                             IfHeld(kKey_WEB_INTERNET)};

// Columns:  A D M R  |  C S  |  H  |  N  |  T  |  V  |  Y
constexpr std::array<ResolutionRow, 14> kRows = {{
    {ORLU_LAST_CHANNEL,
     {kNone,
      {IfHeld(kKey_LAST_CHANNEL), Always(kKey_STOP)},
      kNone,
      kLastOrBack,
      kLastOrBack,
      kNone,
      kStop}},
    {ORLU_STOP, InAllClasses({IfHeld(kKey_STOP), Always(kKey_PAUSE)})},
    {ORLU_FAST_REVERSE,
     {kReverse, kReverseOrReplay, kNone, kReverse, kReverseOrReplay, kReverseOrReplay,
      kReverseOrReplay}},
    {ORLU_FAST_FORWARD,
     {kForward, kForwardOrQuick, kNone, kForward, kForwardOrQuick, kForwardOrQuick,
      kForwardOrQuick}},
    {ORLU_QUICK_REPLAY,
     {kNone, kReplayFirst, kNone, kReplayFirst, kReplayFirst, kNone, kReplayLast}},
    {ORLU_QUICK_SKIP, {kNone, kQuickFirst, kNone, kQuickFirst, kQuickFirst, kNone, kQuickLast}},
    {ORLU_INFO, {kDisplay, kDisplay, kNone, kDisplay, kDisplay, kNone, kDisplay}},
    {ORLU_ASSERT_ON, InAllClasses({IfHeld(kKey_POWER_ON), Always(kKey_POWER)})},
    {ORLU_DVD_MENU,
     {kSourceMenu,
      kMenuOrServices,
      kSourceMenu,
      kSourceMenu,
      kMenuOrServices,
      kSourceMenu,
      {IfHeld(kKey_POPUP_MENU), IfHeld(kKey_SOURCE_MENU)}}},
    {ORLU_LEFT_ARROW, {kLeft, kLeftOrBack, kLeft, kLeftOrBack, kLeftOrBack, kLeft, kLeft}},
    {ORLU_DVR,
     {kNone,
      {IfHeld(kKey_PVR_MENU), IfHeld(kKey_RECORDINGS), IfHeld(kKey_List)},
      kNone,
      kNone,
      {Always(kKey_List)},
      kNone,
      {Always(kKey_TITLE_MENU)}}},
    {ORLU_I_TV,
     {kNone,
      kHomeFirst,
      kNone,
      {IfHeld(kKey_HOME), IfHeld(kKey_TITLE_MENU), IfHeld(kKey_WIDGETS_APPS),
       IfHeld(kKey_WEB_INTERNET)},
      {IfHeld(kKey_WEB_INTERNET), IfHeld(kKey_HOME), IfHeld(kKey_WIDGETS_APPS)},
      kNone,
      kHomeFirst}},
    {ORLU_ASSERT_OFF, InAllClasses({IfHeld(kKey_POWER_OFF), Always(kKey_POWER)})},
    {ORLU_ENTER, InAllClasses({IfHeld(kKey_MENU_SELECT), IfHeld(kKey_CHANNEL_ENTER)})},
}};

// This code set has a home key that is missing from its key map.
constexpr std::string_view kHomeWithoutBit = "T2051";

std::optional<Column> ColumnOf(std::string_view codeset)
{
    switch (codeset.empty() ? '\0' : codeset[0]) {
        case 'A':
        case 'D':
        case 'M':
        case 'R':
            return kColumnADMR;
        case 'C':
        case 'S':
            return kColumnCS;
        case 'H':
            return kColumnH;
        case 'N':
            return kColumnN;
        case 'T':
            return kColumnT;
        case 'V':
            return kColumnV;
        case 'Y':
            return kColumnY;
        default:
            return std::nullopt;
    }
}

std::uint8_t ReadCell(const Cell& cell, std::uint32_t held)
{
    const auto* fit = std::ranges::find_if(cell, [held](const Candidate& candidate) {
        return candidate.mask == 0 || (candidate.mask & held) != 0;
    });
    // A cell with four conditional candidates may have none that fits.
    return fit == cell.end() ? kInvalidUEIKey : fit->key;
}

}  // namespace

std::uint8_t ResolveKey(std::uint32_t orluKey, std::string_view codeset,
                        std::uint32_t ambiguousKeyBitMap)
{
    if (orluKey == ORLU_I_TV && codeset == kHomeWithoutBit) {
        return kKey_HOME;
    }
    const auto column = ColumnOf(codeset);
    const auto* row = std::ranges::find(kRows, orluKey, &ResolutionRow::orluKey);
    if (!column || row == kRows.end()) {
        return kInvalidUEIKey;
    }
    return ReadCell(row->cells[*column], ambiguousKeyBitMap);
}

}  // namespace TrellanService
