// SPDX-License-Identifier: Apache-2.0

#include <iterator>

#include "cli/Arguments.h"
#include "cli/CommandLog.h"
#include "cli/TestItems.h"
#include "cli/Trellan_ServiceCommandLine.h"
#include "uei/UEIInterface.h"

using namespace TrellanServiceMessages;

namespace TrellanService {

namespace {

/// A `FindCECDevice_t` or a `FindEDIDDevice_t`.
template <class Device>
std::string DeviceText(const Device& device)
{
    if (device.result() == "RESULT_ERROR") {
        return "Unable to retrieve CEC info from UEI cloud for device";
    }
    return fmt::format("Found deviceType:{} Brand:{} Codeset:{}", device.devicetype(),
                       device.brand(), device.cicode());
}

}  // namespace

int Trellan_ServiceCommandLine::HandleFindCECDev(const Arguments& arguments, const Answer& answer,
                                                 std::string& /*response*/)
{
    if (arguments.size() < 3) {
        answer("Usage is find_cec_dev <logical addr>,<vendor id>,<osd>");
        return 1;
    }
    FindCECDevice_t request;
    auto argument = arguments.begin();
    request.set_logicaladdr(ReadUnsigned(*argument++));
    request.set_vendorid(ReadUnsigned(*argument++));
    request.set_osd(*argument);
    return OnServerTask([this, &answer, &request] {
        kCommandLog.Put(3, "Calling UEI FindCECDevice");
        m_neighbours.Engine().FindCECDevice(
            request, [answer](const FindCECDevice_t& device) { answer(DeviceText(device)); });
    });
}

int Trellan_ServiceCommandLine::HandleFindEDIDDev(const Arguments& /*arguments*/,
                                                  const Answer& answer, std::string& /*response*/)
{
    FindEDIDDevice_t request;
    request.set_edid(kTestEdid.data(), kTestEdid.size());
    return OnServerTask([this, &answer, &request] {
        kCommandLog.Put(3, "Calling UEI FindEDIDDevice");
        m_neighbours.Engine().FindEDIDDevice(
            request, [answer](const FindEDIDDevice_t& device) { answer(DeviceText(device)); });
    });
}

}  // namespace TrellanService
