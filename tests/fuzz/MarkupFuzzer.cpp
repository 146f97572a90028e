// SPDX-License-Identifier: Apache-2.0

#include <cstdint>
#include <cstdlib>
#include <memory>

#include <google/protobuf/message.h>

#include "ProtoBufs/CodesetConfig.pb.h"
#include "ProtoBufs/DataCollection.pb.h"
#include "ProtoBufs/DataCollectionConfig.pb.h"
#include "ProtoBufs/DeviceInfo.pb.h"
#include "ProtoBufs/NetworkStatus.pb.h"
#include "ProtoBufs/PayloadCfg.pb.h"
#include "ProtoBufs/PayloadPublish.pb.h"
#include "ProtoBufs/PorticoError.pb.h"
#include "ProtoBufs/Sources.pb.h"
#include "ProtoBufs/Trellan_Service.pb.h"
#include "ProtoBufs/WhiteList.pb.h"
#include "orlu/ProtoToMarkup.h"

namespace {

/// All messages that are read as JSON from a file or the local API.
const google::protobuf::Message* const kKinds[] = {
    &CodesetConfig::CodesetConfig::default_instance(),
    &WhiteList::WhiteList::default_instance(),
    &DataCollection::DataCollectionConfig::default_instance(),
    &DataCollection::State::default_instance(),
    &DataCollection::EventStatus::default_instance(),
    &DeviceManagerPb::DeviceInfo::default_instance(),
    &NetManager::Protobuf::NetworkStatus::default_instance(),
    &Portico::PayloadCfg::default_instance(),
    &Portico::PayloadPublishResponse::default_instance(),
    &Portico::Error::default_instance(),
    &KESTRAAPI::Sources::default_instance(),
    &TrellanServiceMessages::OSMControlMsg_t::default_instance(),
    &TrellanServiceMessages::BrandListReq_t::default_instance(),
    &TrellanServiceMessages::DirectEntryReq_t::default_instance(),
};

}  // namespace

// The first byte selects the message, the rest is its text. A message that was read must be the
// same after writing and reading it.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size == 0) {
        return 0;
    }
    const std::string text(data + 1, data + size);
    const std::unique_ptr<google::protobuf::Message> message(
        kKinds[data[0] % std::size(kKinds)]->New());
    try {
        ProtoToMarkup::FromJson(text, *message);
    } catch (const ProtoToMarkup::MarkupError&) {
        return message->ByteSizeLong() == 0 ? 0 : (std::abort(), 0);
    }
    const std::unique_ptr<google::protobuf::Message> again(message->New());
    ProtoToMarkup::FromJson(ProtoToMarkup::ToJson(*message, true, false, false), *again);
    if (again->SerializeAsString() != message->SerializeAsString()) {
        std::abort();
    }
    return 0;
}
