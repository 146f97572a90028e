// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <json/value.h>

#include "controller/Relay.h"
#include "controller/ServiceLink.h"
#include "orlu/Network.h"
#include "orlu/Timer.h"

namespace Controller {

/// The product's side of the page: presses keys, reports the state of the service and of the
/// devices in front of the blaster, if there are any, and sends the product's sources to the
/// service. Reconnects to every peer that is lost. On one task.
class PageService {
public:
    /// A held key ends unless the page repeats the request in this time: the page may have closed.
    static constexpr std::chrono::milliseconds kHoldTimeout{1000};
    /// The blaster counts as not answering when a key has had no answer for this time.
    static constexpr std::chrono::milliseconds kKeyTimeout{3000};

    static constexpr const char* kKeyPath = "/remote/key";
    static constexpr const char* kStatePath = "/remote/state";
    static constexpr const char* kDevicesPath = "/living-room/devices";
    static constexpr const char* kSignalPath = "/living-room/light";

    /// Reports a change of one of the paths. `json` is one line.
    using Tell = std::function<void(const std::string& path, const std::string& json)>;

    PageService(NotifyTargetTaskIF* task, Tell tell);

    void Start();
    /// Releases a held key. The message is sent at the end of the wake-up.
    void Stop();

    /// Presses or releases: `{"codeset": "T2051", "key": "tv_power", "held": true}`. A key is held
    /// from its first press until its release or the press of another key. Nothing on success, else
    /// a `Portico::Error` as JSON.
    std::optional<std::string> Key(const std::string& body);

    /// The product's sources in the form of `/system/sources`. The code sets of those that are
    /// ready are sent to the service, now and with each new connection.
    void TakeSources(const std::string& json);

    /// The value of a path above; the key path has none.
    std::string Value(const std::string& path) const;

private:
    struct Press {
        std::string codeset;
        std::uint8_t key = 0;
        bool operator==(const Press&) const = default;
    };

    void Opened();
    void Lost();
    void Event(const IPCMessageEnvelope& envelope);
    void ReleaseKey();
    void NoteStateChange(bool isReady);
    void Send(const Press& press, bool isDown);
    void SendSources();
    void SetState(const char* member, Json::Value value);
    void SetValue(const char* path, Json::Value value);
    void ConnectToDevices(const Orlu::SocketPtr& socket);
    void HandleDeviceLine(const std::string& json);

    NotifyTargetTaskIF* m_task;
    Tell m_tell;
    ServiceLink m_link;
    std::unique_ptr<Relay> m_relay;
    std::shared_ptr<APClientSocketListenerIF> m_deviceListener;
    IPCMessageRouterPtr m_devices;
    std::shared_ptr<APTimer> m_holdTimer;
    std::shared_ptr<APTimer> m_keyTimer;
    std::optional<Press> m_held;
    /// The service may have taken another path since the press that is held.
    bool m_pathMayDiffer = false;
    /// Let go while the service may not have sent it by infrared; sent again once it does.
    std::optional<Press> m_owed;
    std::optional<std::vector<std::string>> m_sources;
    Json::Value m_values;
};

}  // namespace Controller
