// SPDX-License-Identifier: Apache-2.0

#include "controller/PageResources.h"

#include <cstdlib>
#include <utility>

#include "controller/Messages.h"
#include "orlu/AsioTaskQueue.h"

namespace Controller {

using Portico::LinkMessage;
using ApiLink = Portico::ServiceLink;

namespace {

constexpr std::uint16_t kUsualPort = 8084;
constexpr const char* kSourcesPath = "/system/sources";

}  // namespace

PageResources::PageResources(NotifyTargetTaskIF* task, std::uint16_t port,
                             std::function<void()> ready)
    : m_link(std::make_shared<ApiLink>(
          dynamic_cast<Orlu::AsioTaskQueue&>(*task->Queue()).shared_from_this(),
          "ProductController", port, [this] { AskSources(); })),
      m_page(task, [link = m_link](const std::string& path,
                                   const std::string& json) { link->Changed(path, json); }),
      m_ready(std::move(ready))
{
}

PageResources::~PageResources()
{
    m_link->Close();
}

void PageResources::Start()
{
    for (const char* path :
         {PageService::kStatePath, PageService::kDevicesPath, PageService::kSignalPath}) {
        auto value = At(LinkMessage::Type::kRegister, path);
        value.message.method = "GET";
        value.serve = [this, path](const std::string&, const ApiLink::Respond& respond) {
            respond(false, m_page.Value(path));
        };
        m_link->Add(std::move(value));
    }
    auto key = At(LinkMessage::Type::kRegister, PageService::kKeyPath);
    key.message.method = "POST";
    key.serve = [this](const std::string& body, const ApiLink::Respond& respond) {
        const auto error = m_page.Key(body);
        respond(error.has_value(), error.value_or("{}"));
    };
    m_link->Add(std::move(key));
    auto sources = At(LinkMessage::Type::kSubscribe, kSourcesPath);
    sources.notify = [this](const std::string& json) {
        m_page.TakeSources(json);
    };
    m_link->Add(std::move(sources));
    m_link->Open();
    m_page.Start();
}

/// Called with each new link to the local API. Changes while there was no link were not reported,
/// so the sources are requested and the values are sent again.
void PageResources::AskSources()
{
    LinkMessage ask;
    ask.type = LinkMessage::Type::kRequest;
    ask.id = ++m_lastId;
    ask.method = "GET";
    ask.path = kSourcesPath;
    m_link->Request(std::move(ask), [this](bool isError, const std::string& json) {
        if (!isError) {
            m_page.TakeSources(json);
        }
        // The link keeps the order, so the registrations sent before have arrived.
        if (const auto ready = std::exchange(m_ready, nullptr)) {
            ready();
        }
    });
    for (const char* path : {PageService::kStatePath, PageService::kDevicesPath}) {
        m_link->Changed(path, m_page.Value(path));
    }
}

ApiLink::Registration PageResources::At(LinkMessage::Type type, const char* path)
{
    ApiLink::Registration registration;
    registration.message.type = type;
    registration.message.id = ++m_lastId;
    registration.message.path = path;
    return registration;
}

std::uint16_t LocalApiPort()
{
    const char* given = std::getenv("ORLU_PORTICO_PORT");
    const auto number = ReadNumber(given ? given : "", UINT16_MAX);
    return static_cast<std::uint16_t>(number && *number > 0 ? *number : kUsualPort);
}

}  // namespace Controller
