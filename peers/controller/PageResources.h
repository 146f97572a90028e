// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "controller/PageService.h"
#include "portico/ServiceLink.h"

namespace Controller {

/// Registers the resources of `PageService` at the local API. On the task of `PageService`, which
/// has a thread of its own.
class PageResources {
public:
    /// `ready` is called once, when the resources are registered.
    PageResources(NotifyTargetTaskIF* task, std::uint16_t port, std::function<void()> ready);
    ~PageResources();
    PageResources(const PageResources&) = delete;
    PageResources& operator=(const PageResources&) = delete;

    void Start();
    void Stop() { m_page.Stop(); }

private:
    void AskSources();
    Portico::ServiceLink::Registration At(Portico::LinkMessage::Type type, const char* path);

    std::shared_ptr<Portico::ServiceLink> m_link;
    PageService m_page;
    std::function<void()> m_ready;
    std::uint64_t m_lastId = 0;
};

/// `ORLU_PORTICO_PORT` if it is a port number, else the default port.
std::uint16_t LocalApiPort();

}  // namespace Controller
