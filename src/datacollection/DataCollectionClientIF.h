// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <memory>
#include <string>

#include "orlu/Callback.h"

namespace google::protobuf {
class Message;
}

/// Sends usage events to the product's data collection service, while that says that it takes any.
/// Best effort: nothing is queued, nothing is tried again, no caller is held up. Used on the task
/// that the client was made for; callbacks come there too.
class DataCollectionClientIF {
public:
    using MessagePtr = std::shared_ptr<google::protobuf::Message>;

    /// `callback` is called with true when the service begins to take events, with false when it no
    /// longer does.
    virtual void AddEnabledCallback(const Callback<bool>& callback) = 0;

    /// True if the event went out. Whether it was delivered goes to the log.
    virtual bool SendData(const MessagePtr& message, const std::string& type) = 0;

    /// The same; `callback` is called once, later, with whether the service has taken an event that
    /// went out. It is not called for one that did not.
    virtual bool SendData(const MessagePtr& message, const std::string& type,
                          const Callback<bool>& callback) = 0;

    virtual bool IsDataCollectionServiceUp() = 0;

    virtual ~DataCollectionClientIF() = default;
};
