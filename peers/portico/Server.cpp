// SPDX-License-Identifier: Apache-2.0

#include "portico/Server.h"

#include "orlu/SystemUtils.h"
#include "portico/HttpSession.h"

#include <cerrno>
#include <system_error>
#include <utility>

namespace PorticoApi {

Server::Server(boost::asio::io_context& context, const Options& options, const std::string& root,
               const Timeouts& timeouts)
    : m_options(options),
      m_files(context),
      m_web(options.web),
      m_product(m_resources, m_files, m_log, root),
      m_context{m_resources, m_events, m_files, m_web, timeouts, 0},
      m_listener(context, [this](Socket socket, const Share& share) {
          ServeConnection(std::move(socket), share, m_context);
      })
{
}

std::optional<std::uint16_t> Server::Start(std::string& why)
{
    const auto port = m_listener.Listen(m_options.port, why);
    if (!port) {
        return std::nullopt;
    }
    // Before the first connection: the host check of each request needs the chosen port.
    m_context.port = *port;
    m_product.AddResources(*port);
    m_product.AddDataCollection();
    if (!m_options.resources.empty() && !ReadValues(why)) {
        return std::nullopt;
    }
    if (!m_options.events.empty() && !m_log.Open(m_options.events)) {
        why = m_options.events + ": " + std::generic_category().message(errno);
        return std::nullopt;
    }
    m_resources.SetListener(
        [this](const std::string& path, const std::string& json) { m_events.Notify(path, json); });
    m_listener.Start();
    return port;
}

bool Server::ReadValues(std::string& why)
{
    const auto text = SystemUtils::ReadFile(m_options.resources);
    if (!text) {
        why = "it cannot be read";
    }
    if (!text || !m_product.ReadValues(*text, why)) {
        why = m_options.resources + ": " + why;
        return false;
    }
    return true;
}

}  // namespace PorticoApi
