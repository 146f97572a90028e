// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "portico/Resources.h"

#include <google/protobuf/message.h>

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>

namespace PorticoApi {

class EventLog;
class PublishedFiles;

/// The product's resources and their values. PUT changes a value and notifies its subscribers;
/// DELETE makes the resource not ready. An operator controls the product by these methods.
class Product {
public:
    /// `root` is put in front of the product's paths. All other arguments are borrowed.
    Product(Resources& resources, PublishedFiles& files, EventLog& events, std::string root);
    Product(const Product&) = delete;
    Product& operator=(const Product&) = delete;

    /// Adds all resources except those of the data collection. `port` is that of published URLs.
    void AddResources(std::uint16_t port);

    /// Adds the endpoint of the "UDC" entry of `DataCollection.json` and its state, if there is
    /// such an entry.
    void AddDataCollection();

    /// Sets the first values. `json` is an object of values by path; null means not ready. False,
    /// and the reason in `why`, for any other text.
    bool ReadValues(const std::string& json, std::string& why);

private:
    struct Value {
        const google::protobuf::Message* kind = nullptr;
        std::string json;  ///< One line; empty: not ready.
    };

    void AddValue(const std::string& path, const google::protobuf::Message& kind,
                  const char* first);
    /// Nothing on success, else the reason why `json` is not a value of this path.
    std::optional<std::string> Change(const std::string& path, const std::string& json);
    void Clear(const std::string& path);
    void Get(const std::string& path, const ReplyPtr& reply) const;
    Answer Publish(const std::string& body, std::uint16_t port);
    Answer TakeEvent(const std::string& body, const std::string& state);

    Resources& m_resources;
    PublishedFiles& m_files;
    EventLog& m_events;
    const std::string m_root;
    std::map<std::string, Value> m_values;
};

}  // namespace PorticoApi
