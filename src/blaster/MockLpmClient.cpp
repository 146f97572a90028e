// SPDX-License-Identifier: Apache-2.0

#include "blaster/MockLpmClient.h"

#include "orlu/DPrint.h"

using namespace LpmServiceMessages;

namespace TrellanService {

namespace {

constexpr DPrint kLog("MockLpmClient");

void NotImplemented(const char* operation)
{
    kLog.Log(3, "{}::{} Not Implemented", "MockLpmClient", operation);
}

}  // namespace

void MockLpmClient::Connect(const Callback<bool>& callback)
{
    kLog.Log(3, "{}::{}", "MockLpmClient", "Connect");
    if (callback) {
        callback(true);
    }
}

CallbackConnection MockLpmClient::TRS_SendToBlaster(const TRS_BlasterMsg_t& /*message*/,
                                                    Callback<TRS_BlasterMsg_t> /*callback*/,
                                                    Ipc_Device_t /*device*/)
{
    NotImplemented("TRS_SendToBlaster");
    return {};
}

void MockLpmClient::TRS_SendToBlasterTimeout(const TRS_BlasterMsg_t& /*message*/,
                                             const Callback<TRS_BlasterMsg_t>& /*callback*/,
                                             const LpmTimedOut& /*timedOut*/,
                                             std::uint32_t /*timeoutMs*/, Ipc_Device_t /*device*/)
{
    NotImplemented("TRS_SendToBlasterTimeout");
}

void MockLpmClient::TRS_SendKeyToBlaster(const TRS_BlasterMsg_t& /*message*/,
                                         Ipc_Device_t /*device*/)
{
    NotImplemented("TRS_SendKeyToBlaster");
}

void MockLpmClient::TRS_SendBlasterKeyMapRqst(const TRS_BlasterMsg_t& /*message*/,
                                              Ipc_Device_t /*device*/)
{
    NotImplemented("TRS_SendBlasterKeyMapRqst");
}

void MockLpmClient::SendCecKey(const IpcCecKey_t& /*message*/, Ipc_Device_t /*device*/)
{
    NotImplemented("SendCecKey");
}

}  // namespace TrellanService
