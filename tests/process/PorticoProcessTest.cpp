// SPDX-License-Identifier: Apache-2.0

#include <csignal>
#include <cstdlib>
#include <memory>

#include <gtest/gtest.h>

#include "portico/Consumer.h"
#include "process/Program.h"

namespace ProcessTests {
namespace {

using PorticoApi::Consumer;

/// A local API on a free port.
class Api {
public:
    Api(const TemporaryRoot& folder, Arguments more)
    {
        more.insert(more.begin(), {"--port", "0"});
        m_program = std::make_unique<Program>(folder, "PorticoServer", more);
        m_port = static_cast<std::uint16_t>(
            std::atoi(m_program->WaitForLine("port ").substr(5).c_str()));
        m_program->WaitForLine("ready");
    }

    std::uint16_t Port() const { return m_port; }
    Program& Process() { return *m_program; }

private:
    std::unique_ptr<Program> m_program;
    std::uint16_t m_port = 0;
};

TEST(PorticoProcessTest, ServesTheProductsFoldersAndEndsCleanly)
{
    const TemporaryRoot folder;
    folder.Write("/opt/Orlu/etc/DataCollection.json",
                 R"({"properties": [{"name": "UDC", "pt_endpoint": "/collect"}]})");
    folder.Write("/mnt/nv/payload/brandList0", R"({"brandList":["A"]})");
    folder.Write("/values.json", R"({"/network/status": null, "/collect/state": {}})");
    folder.Write("/web/index.html", "page");
    Api api(folder, {"--resources", folder.Path() + "/values.json", "--events",
                     folder.Path() + "/events", "--web", folder.Path() + "/web"});
    Consumer consumer(api.Port());
    EXPECT_EQ(consumer.Ask("GET", "/network/status").substr(0, 3), "503");
    EXPECT_EQ(consumer.Ask("PUT", "/collect/state", R"({"ServiceStatus":"DATACOLLECTION_ENABLE"})")
                  .substr(0, 3),
              "200");
    EXPECT_EQ(consumer.Ask("POST", "/collect", R"({"type":"a"})"), R"(200 {"delivered":true})");
    EXPECT_EQ(folder.Read("/events"), "{\"type\":\"a\"}\n");
    EXPECT_EQ(
        consumer.Ask("POST", "/payload/publish", R"({"fileName":"brandList0","lifeSpanSec":9})")
            .substr(0, 3),
        "200");
    EXPECT_EQ(consumer.Ask("GET", "/payload/files/brandList0"), R"(200 {"brandList":["A"]})");
    EXPECT_EQ(consumer.Ask("GET", "/"), "200 page");
    Consumer events(api.Port());
    events.Send("GET /events HTTP/1.1\r\nHost: localhost:" + std::to_string(api.Port()) +
                "\r\n\r\n");
    events.ReadTo("\r\n\r\n");
    api.Process().Signal(SIGTERM);
    EXPECT_EQ(api.Process().WaitForEnd(), 0);
    EXPECT_EQ(events.Read(), "closed");
}

TEST(PorticoProcessTest, SaysInOneLineWhatItCannotDo)
{
    const TemporaryRoot folder;
    folder.Write("/values.json", R"({"/nothing": 1})");
    const Api api(folder, {});
    const std::pair<Arguments, int> rows[] = {
        {{"--port", "no"}, 2},
        {{"--nonsense"}, 2},
        {{"--port", std::to_string(api.Port())}, 1},
        {{"--port", "0", "--resources", folder.Path() + "/values.json"}, 1},
        {{"--port", "0", "--resources", folder.Path() + "/missing"}, 1},
        {{"--port", "0", "--events", folder.Path() + "/missing/file"}, 1},
    };
    for (const auto& [arguments, code] : rows) {
        Program program(folder, "PorticoServer", arguments);
        EXPECT_EQ(program.WaitForEnd(), code);
        EXPECT_TRUE(program.Log().starts_with("PorticoServer: ")) << program.Log();
        EXPECT_EQ(program.Log().find('\n'), program.Log().size() - 1) << program.Log();
    }
}

}  // namespace
}  // namespace ProcessTests
