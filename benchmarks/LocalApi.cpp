// SPDX-License-Identifier: Apache-2.0

#include <fstream>
#include <memory>
#include <stdexcept>
#include <thread>

#include <fmt/format.h>

#include "benchmarks/HttpReader.h"
#include "benchmarks/Measurements.h"

namespace Bench {

namespace {

constexpr const char* kControl = "/remote/integration";

/// One nginx process with a single server at `port` and this location.
std::unique_ptr<Program> StartNginx(const Place& place, const std::string& name, std::uint16_t port,
                                    const std::string& outside, const std::string& location)
{
    const auto root = place.roots / name;
    std::filesystem::create_directories(root);
    const auto conf = root / "nginx.conf";
    std::ofstream(conf) << fmt::format(
        "daemon off;\nmaster_process off;\npid {0}/pid;\nerror_log {0}/error.log;\n"
        "events {{}}\n"
        "http {{\n  access_log off;\n  keepalive_requests 100000000;\n"
        "  client_body_temp_path {0}/body;\n  proxy_temp_path {0}/proxy;\n"
        "  fastcgi_temp_path {0}/fastcgi;\n  uwsgi_temp_path {0}/uwsgi;\n"
        "  scgi_temp_path {0}/scgi;\n  {2}\n"
        "  server {{\n    listen 127.0.0.1:{1};\n    location / {{ {3} }}\n  }}\n}}\n",
        root.string(), port, outside, location);
    return std::make_unique<Program>(
        std::vector<std::string>{place.nginx, "-p", root.string(), "-c", conf.string()}, root, 2);
}

/// The local API and the service behind it.
struct Product {
    Product(const Place& place, const std::filesystem::path& root, int logLevel)
        : port(FreePort()),
          api({place.ProgramPath("PorticoServer"), "--port", std::to_string(port)}, root, logLevel),
          service({place.ProgramPath("TrellanService")}, root, logLevel,
                  {"ORLU_PORTICO_PORT=" + std::to_string(port)}),
          reader(port)
    {
        while (body.empty()) {
            body = reader.Get(kControl);
            std::this_thread::yield();
        }
    }

    std::uint16_t port;
    Program api;
    Program service;
    HttpReader reader;
    std::string body;
};

/// An nginx that relays to a second one, which returns the same bytes.
struct Relay {
    Relay(const Place& place, const std::string& body)
        : behind(StartNginx(place, "behind", backPort, "",
                            "default_type application/json; return 200 '" + body + "';")),
          front(StartNginx(place, "front", frontPort,
                           fmt::format("upstream behind {{ server 127.0.0.1:{}; keepalive 4; "
                                       "keepalive_requests 100000000; }}",
                                       backPort),
                           "proxy_pass http://behind; proxy_http_version 1.1; "
                           "proxy_set_header Connection '';")),
          back(backPort),
          reader(frontPort)
    {
        if (reader.Get(kControl) != body) {
            throw std::runtime_error("nginx does not serve what the service answers");
        }
    }

    std::uint16_t backPort = FreePort();
    std::uint16_t frontPort = FreePort();
    std::unique_ptr<Program> behind;
    std::unique_ptr<Program> front;
    HttpReader back;  ///< connected before the front nginx needs it
    HttpReader reader;
};

std::vector<double> TimeGets(HttpReader& reader, std::size_t count)
{
    std::vector<double> micros;
    micros.reserve(count);
    for (std::size_t i = 0; i < count; ++i) {
        const auto start = Clock::now();
        reader.Get(kControl);
        micros.push_back(std::chrono::duration<double, std::micro>(Clock::now() - start).count());
    }
    return micros;
}

}  // namespace

std::vector<Figure> MeasureLocalApi(const Place& place, const Effort& effort)
{
    if (place.nginx.empty()) {
        return {};
    }
    const auto root = place.roots / "api";
    LayOutRoot(root);
    std::vector<double> service;
    std::vector<double> serviceTail;
    std::vector<double> floor;
    std::vector<double> floorTail;
    for (std::size_t round = 0; round < effort.rounds; ++round) {
        Product product(place, root, effort.logLevel);
        Relay relay(place, product.body);
        TimeGets(product.reader, effort.gets / 10);
        TimeGets(relay.reader, effort.gets / 10);
        const auto ours = TimeGets(product.reader, effort.gets);
        const auto theirs = TimeGets(relay.reader, effort.gets);
        service.push_back(Median(ours));
        serviceTail.push_back(Quantile(ours, 0.99));
        floor.push_back(Median(theirs));
        floorTail.push_back(Quantile(theirs, 0.99));
    }
    const Goal goal{Goal::Kind::AtMost, 1.2};
    return {CompareRounds("GET beside two nginx, p50", "µs", 1, service, floor, goal),
            CompareRounds("GET beside two nginx, p99", "µs", 1, serviceTail, floorTail)};
}

}  // namespace Bench
