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

/// The product's own resources and their values. PUT changes a value and notifies, DELETE makes it
/// not ready: so an operator moves the product.
class Product {
public:
    /// `root` is put in front of the product's paths. All are borrowed.
    Product(Resources& resources, PublishedFiles& files, EventLog& events, std::string root);
    Product(const Product&) = delete;
    Product& operator=(const Product&) = delete;

    /// Puts up everything but what needs the data collection's endpoint.
    void PutUp(std::uint16_t port);

    /// The endpoint of `DataCollection.json`'s "UDC" entry and its state, if the file has one.
    void PutUpDataCollection();

    /// The first values, an object of values by path; null: not ready. False and the reason in
    /// `why` for anything else.
    bool ReadValues(const std::string& json, std::string& why);

private:
    struct Value {
        const google::protobuf::Message* kind = nullptr;
        std::string json;  ///< On one line; empty: not ready.
    };

    void PutUpValue(const std::string& path, const google::protobuf::Message& kind,
                    const char* first);
    /// Nothing if done, else the reason why `json` is no value of this path.
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
