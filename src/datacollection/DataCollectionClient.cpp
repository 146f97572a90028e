// SPDX-License-Identifier: Apache-2.0

#include "datacollection/DataCollectionClient.h"

#include <mutex>
#include <unordered_map>

#include <sys/time.h>

#include "ProtoBufs/DataCollectionConfig.pb.h"
#include "orlu/DPrint.h"
#include "orlu/MonotonicClock.h"
#include "orlu/ProtoToMarkup.h"
#include "orlu/Runtime.h"
#include "orlu/SystemUtils.h"

namespace DataCollection {

namespace {

constexpr DPrint kLog("DataCollectionClient");
constexpr const char* kConfigFile = "/opt/Orlu/etc/DataCollection.json";

/// The content of the file, and whether it was read. A `once_flag` cannot be reset, so `Reload`
/// builds a new object.
struct Config {
    std::once_flag isRead;
    std::unordered_map<std::string, DataType> dataTypeMap;
};

std::optional<Config>& TheConfig()
{
    static std::optional<Config> config(std::in_place);
    return config;
}

DataCollectionConfig ReadConfig()
{
    DataCollectionConfig config;
    const auto text = SystemUtils::ReadFile(kConfigFile);
    if (!text) {
        kLog.Log(1, "ERROR: file read error on file: {} with error: {}", kConfigFile,
                 "cannot be read");
        return config;
    }
    try {
        ProtoToMarkup::FromJson(*text, config);
    } catch (const ProtoToMarkup::MarkupError& error) {
        kLog.Log(1, "ReadConfigFileOnce:: Exception ProtoToMarkup::MarkupError: {}", error.what());
    }
    return config;
}

}  // namespace

DataCollectionClient::DataCollectionClient()
{
    m_state.set_servicestatus(State::DATACOLLECTION_DISABLE);
    std::call_once(TheConfig()->isRead, &DataCollectionClient::ReadConfigFileOnce);
}

void DataCollectionClient::Reload()
{
    TheConfig().emplace();
}

void DataCollectionClient::ReadConfigFileOnce()
{
    // A product without the file collects nothing; that is not an error.
    if (!DirUtils::DoesFileExist(kConfigFile)) {
        return;
    }
    const DataCollectionConfig config = ReadConfig();
    kLog.Log(4,
             "ReadConfigFileOnce Reading from Config file and filling the Protobuf: Protbuf data "
             "is {}",
             config.DebugString());
    for (const auto& entry : config.properties()) {
        kLog.Log(3, "Inserting into Map {}", entry.name());
        TheConfig()->dataTypeMap.emplace(entry.name(),
                                         DataType{entry.pt_endpoint(), entry.ipc_address()});
    }
}

std::optional<DataType> DataCollectionClient::FindDataType(const std::string& name)
{
    const auto& types = TheConfig()->dataTypeMap;
    const auto found = types.find(name);
    return found == types.end() ? std::nullopt : std::optional(found->second);
}

void DataCollectionClient::AddEnabledCallback(const Callback<bool>& callback)
{
    m_callbacks.push_back(callback);
}

bool DataCollectionClient::IsDataCollectionServiceUp()
{
    kLog.Log(4, "IsDataCollectionServiceUp DataCollectionService State = {}",
             static_cast<int>(m_state.servicestatus()));
    return m_state.servicestatus() == State::DATACOLLECTION_ENABLE;
}

void DataCollectionClient::DataCollectionStateCb(const State& state)
{
    kLog.Log(4,
             "DataCollectionStateCb, DataCollectionService State CallBack State = ({}), cached "
             "state({})",
             static_cast<int>(state.servicestatus()), static_cast<int>(m_state.servicestatus()));
    if (state.servicestatus() == m_state.servicestatus()) {
        return;
    }
    m_state = state;
    SendEnabledNotification();
}

void DataCollectionClient::SendEnabledNotification()
{
    kLog.Put(3, "(SendEnabledNotification)");
    const bool isEnabled = m_state.servicestatus() == State::DATACOLLECTION_ENABLE;
    kLog.Put(4, isEnabled ? "calling cb(true)" : "calling cb(false)");
    // A copy, because a callback may add another one.
    for (const auto& callback : std::vector(m_callbacks)) {
        if (callback) {
            callback(isEnabled);
        }
    }
}

Event DataCollectionClient::BuildData(const MessagePtr& message, const std::string& type)
{
    kLog.Log(4, "DataCollectionClient:BuildData sending event: {}", type);
    Event event;
    if (!message) {
        return event;
    }
    try {
        event.set_data(ProtoToMarkup::ToJson(*message, true, false, false));
    } catch (const ProtoToMarkup::MarkupError& error) {
        kLog.Log(1, "Exception ProtoToMarkup::MarkupError: {}", error.what());
        // The caller recognises the failure by the missing fields, see `IsComplete`.
        return event;
    }
    event.set_monotime(MonotonicClock::NowMs());
    event.set_time(GetIso8601FormattedTime());
    event.set_type(type);
    return event;
}

bool DataCollectionClient::IsComplete(const Event& event)
{
    return event.has_time() && event.has_type() && event.has_monotime();
}

std::string DataCollectionClient::GetIso8601FormattedTime()
{
    const char* const unknown = "unknown";
    // `gettimeofday` is called for the zone only. The time comes from the runtime's clock.
    timeval ignored{};
    struct timezone zone {};
    if (const int result = gettimeofday(&ignored, &zone); result != 0) {
        kLog.Log(1, "gettimeofday() return value : {}", result);
        return unknown;
    }
    using namespace std::chrono;
    const auto now = floor<microseconds>(Orlu::Runtime().WallClock());
    const auto second = floor<seconds>(now);
    const std::time_t seconds = system_clock::to_time_t(second);
    std::tm utc{};
    if (gmtime_r(&seconds, &utc) == nullptr) {
        kLog.Put(1, "gmtime_r() returned null");
        return unknown;
    }
    return fmt::format("{:04}-{:02}-{:02}T{:02}:{:02}:{:02}.{:06}+{:02}:{:02}", utc.tm_year + 1900,
                       utc.tm_mon + 1, utc.tm_mday, utc.tm_hour, utc.tm_min, utc.tm_sec,
                       (now - second).count(), zone.tz_minuteswest / 60, zone.tz_minuteswest % 60);
}

Callback<bool> DataCollectionClient::LogDelivery(const DPrint& log, const std::string& type)
{
    return [log, type](bool delivered) {
        log.Log(4, "Default response From DataCollectionService : {}, delivery status = {}", type,
                delivered ? "delivered" : "not delivered");
    };
}

}  // namespace DataCollection
