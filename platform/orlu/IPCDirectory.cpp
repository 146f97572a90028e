// SPDX-License-Identifier: Apache-2.0

#include "orlu/Network.h"
#include "orlu/SystemUtils.h"

IPCDirectory& IPCDirectory::Get()
{
    static IPCDirectory directory;
    return directory;
}

Network::Address IPCDirectory::Lookup(const std::string& serviceName) const
{
    // A slash could lead out of the directory of the sockets.
    if (serviceName.empty() || serviceName.find('/') != std::string::npos) {
        return Network::Address();
    }
    return Network::Address(SystemUtils::RootedPath("/run/orlu/" + serviceName + ".sock"));
}
