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

/// What the two transports have in common: the service's state with those who want to hear of it,
/// and the event itself. The first one reads `/opt/Orlu/etc/DataCollection.json` for all of the
/// process; a file that is missing or damaged leaves every data type unknown.
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

    /// A state from the transport; one that differs from the one held is told.
    void DataCollectionStateCb(const State& state);
    /// Takes a state without telling.
    void SetState(State::Values state) { m_state.set_servicestatus(state); }
    void SendEnabledNotification();

    /// The message as JSON, with the two times of this moment. No field is set if the message
    /// can't be rendered.
    Event BuildData(const MessagePtr& message, const std::string& type);
    static bool IsComplete(const Event& event);
    /// "2026-05-04T03:02:01.000009+00:00"; "unknown" if the clock fails.
    static std::string GetIso8601FormattedTime();

    /// What hears of the delivery where the caller does not want to.
    static Callback<bool> LogDelivery(const DPrint& log, const std::string& type);

private:
    static void ReadConfigFileOnce();

    State m_state;
    std::vector<Callback<bool>> m_callbacks;
};

}  // namespace DataCollection
