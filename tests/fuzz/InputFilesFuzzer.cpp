// SPDX-License-Identifier: Apache-2.0

#include <cstdint>
#include <string>

#include "cloud/Edid.h"
#include "cloud/ReplyScript.h"
#include "datacollection/DataCollectionClient.h"
#include "devices/DevicesFile.h"
#include "lpm/ReplyScript.h"
#include "orlu/MfgData.h"
#include "qsp/qsp.h"
#include "support/TemporaryRoot.h"

namespace {

struct CollectionFile : DataCollection::DataCollectionClient {
    using DataCollectionClient::FindDataType;
};

}  // namespace

// The first byte selects the file, the rest is its content.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const TemporaryRoot root;
    if (size == 0) {
        return 0;
    }
    const std::string text(data + 1, data + size);
    std::string why;
    switch (data[0] % 6) {
        case 0:
            root.Write("/opt/Orlu/etc/MfgData.json", text);
            MfgData::Reload();
            MfgData::Get("irBlasterCapability");
            break;
        case 1:
            root.Write("/opt/Orlu/etc/DataCollection.json", text);
            CollectionFile::Reload();
            CollectionFile::FindDataType("UDC");
            break;
        case 2:
            root.Write("/qsp.conf", text);
            QSP_stop();
            QSP_set_online_vector("vector");
            QSP_set_online_unique_id("identity");
            QSP_start("/qsp.conf");
            break;
        case 3:
            Lpm::Devices::ParseDevicesFile(text, why);
            break;
        case 4:
            Lpm::ReplyScript().Load(text, why);
            break;
        default:
            if (const auto monitor = Cloud::ReadEdid({data + 1, size - 1});
                monitor && (monitor->manufacturer.size() != 3 || monitor->name.size() > 13)) {
                __builtin_trap();
            }
    }
    return 0;
}
