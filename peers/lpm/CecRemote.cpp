// SPDX-License-Identifier: Apache-2.0

#include "lpm/CecRemote.h"

#include "ProtoBufs/KeyValues.h"

#include <algorithm>
#include <array>

#include "orlu/DPrint.h"

namespace Lpm {

using namespace IpcProtocol;

namespace {

constexpr DPrint kLog("CecRemote");

struct Row {
    KEY_VALUE productKey;
    std::uint8_t userControl;
};

/// The user control codes as HDMI-CEC numbers them.
constexpr std::array kRows = std::to_array<Row>({
    {ORLU_MUTE, 0x43},
    {ORLU_VOLUME_DOWN, 0x42},
    {ORLU_VOLUME_UP, 0x41},
    {ORLU_LAST_CHANNEL, 0x32},
    {ORLU_CHANNEL_PRESET_DOWN, 0x31},
    {ORLU_CHANNEL_PRESET_UP, 0x30},
    {ORLU_STOP, 0x45},
    {ORLU_DOWN_ARROW, 0x02},
    {ORLU_TV_POWER, 0x40},
    {ORLU_SOURCE_POWER, 0x40},
    {ORLU_EXIT, 0x0D},
    {ORLU_TV_INPUT, 0x34},
    {ORLU_NUMBER_0, 0x20},
    {ORLU_NUMBER_1, 0x21},
    {ORLU_NUMBER_2, 0x22},
    {ORLU_NUMBER_3, 0x23},
    {ORLU_NUMBER_4, 0x24},
    {ORLU_NUMBER_5, 0x25},
    {ORLU_NUMBER_6, 0x26},
    {ORLU_NUMBER_7, 0x27},
    {ORLU_NUMBER_8, 0x28},
    {ORLU_NUMBER_9, 0x29},
    {ORLU_PLAY, 0x44},
    {ORLU_PAUSE, 0x46},
    {ORLU_FAST_REVERSE, 0x48},
    {ORLU_FAST_FORWARD, 0x49},
    {ORLU_QUICK_REPLAY, 0x4C},
    {ORLU_QUICK_SKIP, 0x4B},
    {ORLU_DASH, 0x2A},
    {ORLU_RIGHT_ARROW, 0x04},
    {ORLU_INFO, 0x35},
    {ORLU_PAGE_DOWN, 0x38},
    {ORLU_PAGE_UP, 0x37},
    {ORLU_ASSERT_ON, 0x6D},
    {ORLU_DVD_MENU, 0x10},
    {ORLU_RECORD, 0x47},
    {ORLU_LEFT_ARROW, 0x03},
    {ORLU_UP_ARROW, 0x01},
    {ORLU_I_TV, 0x09},
    {ORLU_RED, 0x72},
    {ORLU_GREEN, 0x73},
    {ORLU_YELLOW, 0x74},
    {ORLU_BLUE, 0x71},
    {ORLU_ASSERT_OFF, 0x6C},
    {ORLU_EPG, 0x53},
    {ORLU_ENTER, 0x00},
    {ORLU_BACK, 0x0D},
});

// CecUserControl finds a row by binary search.
static_assert(std::ranges::is_sorted(kRows, {}, &Row::productKey));

}  // namespace

std::optional<std::uint8_t> CecUserControl(std::uint32_t productKey)
{
    const auto row = std::ranges::lower_bound(kRows, productKey, {}, &Row::productKey);
    if (row == kRows.end() || row->productKey != productKey) {
        return std::nullopt;
    }
    return row->userControl;
}

CecRemote::CecRemote(CecBusIF& bus, NotifyTargetTaskIF* task)
    : m_bus(bus), m_alarm(task->Queue()->CreateAlarm())
{
}

void CecRemote::Press(std::uint32_t productKey, ConnectionId from)
{
    const auto userControl = CecUserControl(productKey);
    if (!userControl) {
        kLog.Log(2, "Product key {} has no place on the CEC bus", productKey);
        return;
    }
    // A CEC device tells a new press from a repeat by the release between them.
    Release();
    m_pressed = userControl;
    m_presser = from;
    SendPressed();
}

/// Sends the key again until `Release` cancels the alarm.
void CecRemote::SendPressed()
{
    m_bus.SendUserControl(*m_pressed, true);
    m_alarm->Arm(Orlu::Runtime().Now() + kRepeat, [this] { SendPressed(); });
}

void CecRemote::Release()
{
    if (m_pressed) {
        m_alarm->Cancel();
        m_bus.SendUserControl(*m_pressed, false);
        m_pressed.reset();
    }
}

void CecRemote::ConnectionLost(ConnectionId connection)
{
    if (connection == m_presser) {
        Release();
    }
}

}  // namespace Lpm
