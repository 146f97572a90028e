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

/// What a page needs of the product's inside: presses keys, says how the service is, and what the
/// devices in front of the blaster do, where there are any to watch. Gives the service the sources
/// of the product. Stays up whatever leaves, and takes it up again. On one task.
class PageService {
public:
    /// A held key ends unless it is held again in this time, so that a page which has died lets go.
    static constexpr std::chrono::milliseconds kHoldTimeout{1000};
    /// A blaster counts as silent when a key is unanswered for this long.
    static constexpr std::chrono::milliseconds kKeyTimeout{3000};

    static constexpr const char* kKeyPath = "/remote/key";
    static constexpr const char* kStatePath = "/remote/state";
    static constexpr const char* kDevicesPath = "/living-room/devices";
    static constexpr const char* kLightPath = "/living-room/light";

    /// Tells of a change of one of the paths; `json` is one line.
    using Tell = std::function<void(const std::string& path, const std::string& json)>;

    PageService(NotifyTargetTaskIF* task, Tell tell);

    void Start();
    /// Lets go of a held key; it is sent at the end of the wake-up.
    void Stop();

    /// Presses or lets go: `{"codeset": "T2051", "key": "tv_power", "held": true}`. A key is held
    /// from its first press on and until it is let go or another one is pressed. Nothing if done,
    /// else a `Portico::Error` as JSON.
    std::optional<std::string> Key(const std::string& body);

    /// The product's sources as `/system/sources` has them; those with a code set that are ready go
    /// to the service, now and whenever it comes.
    void TakeSources(const std::string& json);

    /// The value of a path, of those above that have one.
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
    void LetGo();
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
