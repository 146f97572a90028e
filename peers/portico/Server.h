// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "portico/ConnectionContext.h"
#include "portico/EventLog.h"
#include "portico/EventStream.h"
#include "portico/Listener.h"
#include "portico/Options.h"
#include "portico/Product.h"
#include "portico/PublishedFiles.h"
#include "portico/Resources.h"
#include "portico/WebFolder.h"

#include <boost/asio/io_context.hpp>

#include <optional>
#include <string>

namespace PorticoApi {

/// The local API, on one context's thread. The context must not run after this object has been
/// destroyed.
class Server {
public:
    /// `root` is put in front of the product's paths, but not of the paths in `options`.
    Server(boost::asio::io_context& context, const Options& options, const std::string& root,
           const Timeouts& timeouts);
    Server(const Server&) = delete;
    Server& operator=(const Server&) = delete;

    /// Starts to accept connections. Returns the port, or nothing and the reason in `why`.
    std::optional<std::uint16_t> Start(std::string& why);

private:
    bool ReadValues(std::string& why);

    const Options m_options;
    Resources m_resources;
    EventStreams m_events;
    PublishedFiles m_files;
    EventLog m_log;
    WebFolder m_web;
    Product m_product;
    ConnectionContext m_context;
    Listener m_listener;
};

}  // namespace PorticoApi
