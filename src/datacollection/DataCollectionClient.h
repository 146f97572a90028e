// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <optional>
#include <string>
#include <vector>

#include "ProtoBufs/DataCollection.pb.h"
#include "datacollection/DataCollectionClientIF.h"

class DPrint;

namespace DataCollection {

/// Where the events of one data type go.
struct DataType {
    std::string endpoint;  ///< A resource of the local API.
    std::string ipcAddress;
};

/// The common part of the two transports: the service's state, the callbacks that are told of it,
/// and the event itself. The first instance reads `/opt/Orlu/etc/DataCollection.json` for the whole
/// process; without a readable file every data type is unknown.
class DataCollectionClient : public DataCollectionClientIF {
public:
    DataCollectionClient();
    DataCollectionClient(const DataCollectionClient&) = delete;
    DataCollectionClient& operator=(const DataCollectionClient&) = delete;

    void AddEnabledCallback(const Callback<bool>& callback) override;
    bool IsDataCollectionServiceUp() override;

    /// For tests: the next client reads the file anew.
    static void Reload();

protected:
    /// Nothing for a type that the file does not name.
    static std::optional<DataType> FindDataType(const std::string& name);

    /// Takes a state from the transport; the callbacks are told if it differs from the state held.
    void DataCollectionStateCb(const State& state);
    /// Takes a state without telling the callbacks.
    void SetState(State::Values state) { m_state.set_servicestatus(state); }
    void SendEnabledNotification();

    /// The message as JSON, with the two times of this moment. No field is set if the message
    /// can't be rendered.
    Event BuildData(const MessagePtr& message, const std::string& type);
    static bool IsComplete(const Event& event);
    /// "2026-05-04T03:02:01.000009+00:00"; "unknown" if the clock fails.
    static std::string GetIso8601FormattedTime();

    /// The callback for a caller that passed none: logs the delivery.
    static Callback<bool> LogDelivery(const DPrint& log, const std::string& type);

private:
    static void ReadConfigFileOnce();

    State m_state;
    std::vector<Callback<bool>> m_callbacks;
};

}  // namespace DataCollection
