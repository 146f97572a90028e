// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <memory>
#include <string>

#include "orlu/Callback.h"

namespace google::protobuf {
class Message;
}

/// Sends usage events to the product's data collection service while it takes events. Best effort:
/// nothing is queued or tried again, and no call blocks. Used on the task that the client was made
/// for; callbacks run there too.
class DataCollectionClientIF {
public:
    using MessagePtr = std::shared_ptr<google::protobuf::Message>;

    /// `callback` is called with true when the service begins to take events, with false when it no
    /// longer does.
    virtual void AddEnabledCallback(const Callback<bool>& callback) = 0;

    /// True if the event was sent. Whether it was delivered is logged.
    virtual bool SendData(const MessagePtr& message, const std::string& type) = 0;

    /// The same; `callback` is called once, later, with whether the service has taken an event that
    /// went out. It is not called for one that did not.
    virtual bool SendData(const MessagePtr& message, const std::string& type,
                          const Callback<bool>& callback) = 0;

    virtual bool IsDataCollectionServiceUp() = 0;

    virtual ~DataCollectionClientIF() = default;
};
