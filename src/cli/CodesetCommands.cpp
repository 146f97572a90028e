// SPDX-License-Identifier: Apache-2.0

#include "blaster/Trellan_ServiceBlasterProxy.h"
#include "cli/CommandLog.h"
#include "cli/TestItems.h"
#include "cli/Trellan_ServiceCommandLine.h"
#include "uei/UEIInterface.h"

using namespace LpmServiceMessages;

namespace TrellanService {

namespace {

constexpr std::uint32_t kOnlineKind = 2;

}  // namespace

int Trellan_ServiceCommandLine::HandleStoreCodeset(const Arguments& arguments, const Answer& answer,
                                                   std::string& /*response*/)
{
    const char* complaint = arguments.empty() ? "NOT ENOUGH ARGS"
                            : arguments.front() != kTestCodesetName
                                ? "ONLY ABLE TO STORE CODESET T2051 FROM COMMAND LINE"
                                : nullptr;
    if (complaint != nullptr) {
        kCommandLog.Log(3, "Response: {}", complaint);
        answer(complaint);
        return 1;
    }
    return OnServerTask([this, &answer] {
        auto& proxy = m_neighbours.BlasterProxy();
        const Trellan_ServiceBlasterProxy::SourceListCallback loaded(
            [answer](const BulkTransferResponse& response) {
                answer(response.result() == BULK_TRANSFER_SUCCESS
                           ? "Codeset successfully loaded in blaster"
                           : "Error loading codeset in blaster");
            });
        // Queued before the transfer begins, as the proxy requires.
        proxy.QueueCallback(loaded);
        proxy.StoreCodesetInBlaster(kTestCodesetName, kTestCodeset.data(),
                                    static_cast<std::uint32_t>(kTestCodeset.size()));
    });
}

int Trellan_ServiceCommandLine::HandleLoadCodeset(const Arguments& arguments, const Answer& answer,
                                                  std::string& /*response*/)
{
    if (arguments.size() != 1) {
        answer("Usage is load_codeset <codeset_name>");
        return 1;
    }
    return OnServerTask([this, &answer, &name = arguments.front()] {
        m_neighbours.Engine().LoadCodeset(
            name,
            [answer, name](const BulkTransferResponse& /*response*/) {
                answer("Loaded codeset " + name);
            },
            kOnlineKind);
    });
}

}  // namespace TrellanService
