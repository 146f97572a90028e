// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "controller/Door.h"
#include "portico/ServiceLink.h"

namespace Controller {

/// The door's resources at the local API, on the door's task, which has a thread of its own.
class LocalApi {
public:
    /// `ready` is called once, when the resources are up.
    LocalApi(NotifyTargetTaskIF* task, std::uint16_t port, std::function<void()> ready);
    ~LocalApi();
    LocalApi(const LocalApi&) = delete;
    LocalApi& operator=(const LocalApi&) = delete;

    void Start();
    void Stop() { m_door.Stop(); }

private:
    void AskSources();
    Portico::ServiceLink::Registration At(Portico::LinkMessage::Type type, const char* path);

    std::shared_ptr<Portico::ServiceLink> m_link;
    Door m_door;
    std::function<void()> m_ready;
    std::uint64_t m_lastId = 0;
};

/// `ORLU_PORTICO_PORT`, if it is a port's number, else the usual one.
std::uint16_t LocalApiPort();

}  // namespace Controller
