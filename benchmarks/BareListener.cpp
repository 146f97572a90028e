// SPDX-License-Identifier: Apache-2.0

// The floor for the start of the service: a program with the service's libraries and schemas that
// only listens at the service's socket and answers requests, one client at a time.

#include <cstdio>

#include <json/value.h>

#include "ProtoBufs/CodesetConfig.pb.h"
#include "ProtoBufs/LpmServiceMessages.pb.h"
#include "ProtoBufs/Trellan_MessageIDs.pb.h"
#include "ProtoBufs/Trellan_Service.pb.h"
#include "ProtoBufs/UEIKeyNames.pb.h"
#include "ProtoBufs/WhiteList.pb.h"
#include "benchmarks/Stream.h"

namespace Bench {

namespace {

/// Makes the linker take the libraries and schemas that the service has; the schemas register
/// themselves at the start.
bool HaveLibraries()
{
    return Json::Value().isNull() && CodesetConfig::CodesetConfig::descriptor() != nullptr &&
           LpmServiceMessages::LPMIpcServicePacket::descriptor() != nullptr &&
           TrellanServiceMessages::State::descriptor() != nullptr &&
           UEIKeyNamesPB::ueikey_descriptor() != nullptr &&
           WhiteList::WhiteList::descriptor() != nullptr;
}

void Answer(Stream& client)
{
    IPCMessageEnvelope envelope;
    const TrellanServiceMessages::CloudConnectState_t state;
    while (client.Fill()) {
        while (client.Next(envelope)) {
            FillEnvelope(envelope, envelope.id(), kReply, envelope.token(), state);
            client.Put(envelope);
        }
        if (!client.Flush()) {
            return;
        }
    }
}

int Main()
{
    const auto listener = ListenAt(SocketPath(RootFromEnvironment(), "TrellanService"));
    if (!listener) {
        std::perror("BareListener");
        return 1;
    }
    while (auto socket = AcceptFrom(listener)) {
        Stream client(std::move(socket));
        Answer(client);
    }
    return HaveLibraries() ? 0 : 1;
}

}  // namespace

}  // namespace Bench

int main()
{
    return Bench::Main();
}
