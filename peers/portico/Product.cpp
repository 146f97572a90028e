// SPDX-License-Identifier: Apache-2.0

#include "portico/Product.h"

#include "ProtoBufs/DataCollection.pb.h"
#include "ProtoBufs/DataCollectionConfig.pb.h"
#include "ProtoBufs/DeviceInfo.pb.h"
#include "ProtoBufs/NetworkStatus.pb.h"
#include "ProtoBufs/PayloadCfg.pb.h"
#include "ProtoBufs/PayloadPublish.pb.h"
#include "ProtoBufs/Sources.pb.h"
#include "orlu/DPrint.h"
#include "orlu/ProtoToMarkup.h"
#include "orlu/StrictJson.h"
#include "orlu/SystemUtils.h"
#include "portico/EventLog.h"
#include "portico/LinkMessage.h"
#include "portico/PublishedFiles.h"

#include <fmt/chrono.h>
#include <json/reader.h>
#include <json/writer.h>

#include <chrono>
#include <cmath>
#include <utility>

namespace PorticoApi {

namespace {

constexpr DPrint kLog("PorticoServer");

constexpr const char* kSystemInfo = "/system/info";
constexpr const char* kSources = "/system/sources";
constexpr const char* kNetworkStatus = "/network/status";
constexpr const char* kPayloadCfg = "/payload/cfg";
constexpr const char* kPublish = "/payload/publish";
constexpr const char* kDataCollection = "/opt/Orlu/etc/DataCollection.json";

constexpr double kLongestLifeSec = 24 * 60 * 60;

std::string OnOneLine(const Json::Value& value)
{
    Json::StreamWriterBuilder builder;
    builder["indentation"] = "";
    builder["emitUTF8"] = true;
    builder["commentStyle"] = "None";
    return Json::writeString(builder, value);
}

template <class Message>
std::optional<Message> Parse(const std::string& json, std::string& why)
{
    Message message;
    try {
        ProtoToMarkup::FromJson(json, message, message.GetDescriptor()->name());
    } catch (const ProtoToMarkup::MarkupError& error) {
        why = error.what();
        return std::nullopt;
    }
    return message;
}

std::string Render(const google::protobuf::Message& message)
{
    return ProtoToMarkup::ToJson(message, true, false, false);
}

std::string Iso8601(std::chrono::system_clock::time_point time)
{
    const auto seconds = std::chrono::floor<std::chrono::seconds>(time);
    const auto rest = std::chrono::duration_cast<std::chrono::milliseconds>(time - seconds);
    return fmt::format("{:%Y-%m-%dT%H:%M:%S}.{:03}Z",
                       fmt::gmtime(std::chrono::system_clock::to_time_t(seconds)), rest.count());
}

}  // namespace

Product::Product(Resources& resources, PublishedFiles& files, EventLog& events, std::string root)
    : m_resources(resources), m_files(files), m_events(events), m_root(std::move(root))
{
}

void Product::AddResources(std::uint16_t port)
{
    AddValue(kSystemInfo, DeviceManagerPb::DeviceInfo::default_instance(),
             R"({"name":"Living room","productType":"marlow-tenpenny",)"
             R"("serialNumber":"0000000000000001","countryCode":"US"})");
    AddValue(kSources, KESTRAAPI::Sources::default_instance(), R"({"sources":[]})");
    AddValue(kNetworkStatus, NetManager::Protobuf::NetworkStatus::default_instance(),
             R"({"isPrimaryUp":true})");
    AddValue(kPayloadCfg, Portico::PayloadCfg::default_instance(),
             R"({"stagingDirectory":"/mnt/nv/payload"})");
    m_resources.ServeOwn("POST", kPublish,
                         [this, port](const std::string& body, const ReplyPtr& reply) {
                             reply->Give(Publish(body, port));
                         });
    m_resources.SetReady(kPublish, true);
}

void Product::AddDataCollection()
{
    const auto text = SystemUtils::ReadFile(m_root + kDataCollection);
    std::string why;
    const auto config = Parse<DataCollection::DataCollectionConfig>(text.value_or("{}"), why);
    if (!config) {
        kLog.Log(1, "{}: {}", kDataCollection, why);
        return;
    }
    for (const auto& properties : config->properties()) {
        if (properties.name() != "UDC") {
            continue;
        }
        const std::string& path = properties.pt_endpoint();
        const std::string state = path + "/state";
        // The path comes from a file: it must not replace another resource.
        if (!Portico::IsResourcePath(state) || m_resources.IsKnown(path) ||
            m_resources.IsKnown(state)) {
            kLog.Log(1, "{}: no endpoint for events: {}", kDataCollection, path);
            return;
        }
        m_resources.ServeOwn("POST", path,
                             [this, state](const std::string& body, const ReplyPtr& reply) {
                                 reply->Give(TakeEvent(body, state));
                             });
        m_resources.SetReady(path, true);
        AddValue(state, DataCollection::State::default_instance(),
                 R"({"ServiceStatus":"DATACOLLECTION_ENABLE"})");
        return;
    }
}

void Product::AddValue(const std::string& path, const google::protobuf::Message& kind,
                       const char* first)
{
    m_values[path] = {&kind, first};
    m_resources.ServeOwn(
        "GET", path, [this, path](const std::string&, const ReplyPtr& reply) { Get(path, reply); });
    m_resources.ServeOwn("PUT", path, [this, path](const std::string& body, const ReplyPtr& reply) {
        const auto why = Change(path, body);
        reply->Give(why ? BadBody(*why) : Answer{200, m_values[path].json, {}});
    });
    m_resources.ServeOwn("DELETE", path, [this, path](const std::string&, const ReplyPtr& reply) {
        Clear(path);
        reply->Give({});
    });
    m_resources.SetReady(path, true);
}

bool Product::ReadValues(const std::string& json, std::string& why)
{
    const auto values = Orlu::ParseStrictJson(json, why);
    if (!values) {
        return false;
    }
    if (!values->isObject()) {
        why = "not an object of values by path";
        return false;
    }
    for (const auto& path : values->getMemberNames()) {
        if (!m_values.contains(path)) {
            why = path + ": not a resource with a value";
            return false;
        }
        const Json::Value& value = (*values)[path];
        if (value.isNull()) {
            Clear(path);
        } else if (const auto reason = Change(path, OnOneLine(value))) {
            why = path + ": " + *reason;
            return false;
        }
    }
    return true;
}

std::optional<std::string> Product::Change(const std::string& path, const std::string& json)
{
    Value& value = m_values[path];
    std::string why;
    const auto parsed = Orlu::ParseStrictJson(json, why);
    if (!parsed) {
        return why;
    }
    const std::unique_ptr<google::protobuf::Message> message(value.kind->New());
    try {
        ProtoToMarkup::FromJson(json, *message, message->GetDescriptor()->name());
    } catch (const ProtoToMarkup::MarkupError& error) {
        return error.what();
    }
    // On one line, as events and the link need it.
    value.json = OnOneLine(*parsed);
    m_resources.SetReady(path, true);
    m_resources.Notify(path, value.json);
    return std::nullopt;
}

void Product::Clear(const std::string& path)
{
    if (!std::exchange(m_values[path].json, {}).empty()) {
        m_resources.SetReady(path, false);
        m_resources.Notify(path, {});
    }
}

void Product::Get(const std::string& path, const ReplyPtr& reply) const
{
    const auto& json = m_values.at(path).json;
    reply->Give(json.empty() ? Failure(503, "the resource is not ready") : Answer{200, json, {}});
}

Answer Product::Publish(const std::string& body, std::uint16_t port)
{
    std::string why;
    const auto request = Parse<Portico::PayloadPublishRequest>(body, why);
    if (!request) {
        return BadBody(why);
    }
    const double life = request->lifespansec();
    if (!std::isfinite(life) || life <= 0 || life > kLongestLifeSec) {
        return Failure(400, "lifeSpanSec is to be above 0 and at most a day");
    }
    // Read for each request: an operator may move the folder while the product runs.
    const auto& cfg = m_values[kPayloadCfg].json;
    if (cfg.empty()) {
        return Failure(503, "there is no staging directory");
    }
    const auto span =
        std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::duration<double>(life));
    const auto folder = Parse<Portico::PayloadCfg>(cfg, why)->stagingdirectory();
    const auto reason = m_files.Publish(m_root + folder, request->filename(), span);
    if (reason) {
        kLog.Log(2, "{} is not published: {}", request->filename(), *reason);
        return Failure(404, *reason);
    }
    Portico::PayloadPublishResponse response;
    response.set_url(
        fmt::format("http://127.0.0.1:{}/payload/files/{}", port, request->filename()));
    response.set_deadline(Iso8601(std::chrono::system_clock::now() + span));
    return {200, Render(response), {}};
}

Answer Product::TakeEvent(const std::string& body, const std::string& state)
{
    std::string why;
    const auto event = Parse<DataCollection::Event>(body, why);
    if (!event) {
        return BadBody(why);
    }
    const auto& json = m_values[state].json;
    if (json.empty()) {
        return Failure(503, "nobody collects events");
    }
    const bool isOn = Parse<DataCollection::State>(json, why)->servicestatus() ==
                      DataCollection::State::DATACOLLECTION_ENABLE;
    DataCollection::EventStatus status;
    status.set_delivered(isOn && m_events.Add(Render(*event)));
    return {200, Render(status), {}};
}

}  // namespace PorticoApi
