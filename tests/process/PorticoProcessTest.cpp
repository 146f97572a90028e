// SPDX-License-Identifier: Apache-2.0

#include <csignal>
#include <cstdlib>

#include <gtest/gtest.h>

#include "portico/Consumer.h"
#include "process/Program.h"

namespace ProcessTests {
namespace {

using PorticoApi::Consumer;

TEST(PorticoProcessTest, ServesTheProductsFoldersAndEndsCleanly)
{
    const TemporaryRoot folder;
    folder.Write("/opt/Orlu/etc/DataCollection.json",
                 R"({"properties": [{"name": "UDC", "pt_endpoint": "/collect"}]})");
    folder.Write("/values.json", R"({"/network/status": null})");
    folder.Write("/web/index.html", "page");
    Program api(folder, "PorticoServer",
                {"--port", "0", "--resources", folder.Path() + "/values.json", "--events",
                 folder.Path() + "/events", "--web", folder.Path() + "/web"});
    const std::string port = api.WaitForLine("port ").substr(5);
    api.WaitForLine("ready");
    Consumer consumer(static_cast<std::uint16_t>(std::atoi(port.c_str())));
    EXPECT_EQ(consumer.Ask("GET", "/network/status").substr(0, 3), "503");
    EXPECT_EQ(consumer.Ask("POST", "/collect", R"({"type":"a"})"), R"(200 {"delivered":true})");
    EXPECT_EQ(folder.Read("/events"), "{\"type\":\"a\"}\n");
    EXPECT_EQ(consumer.Ask("GET", "/"), "200 page");

    const std::pair<Arguments, int> rows[] = {
        {{"--nonsense"}, 2},
        {{"--port", port}, 1},
        {{"--port", "0", "--resources", folder.Path() + "/missing"}, 1},
        {{"--port", "0", "--events", folder.Path() + "/missing/file"}, 1},
    };
    for (const auto& [arguments, code] : rows) {
        Program program(folder, "PorticoServer", arguments);
        EXPECT_EQ(program.WaitForEnd(), code);
        EXPECT_TRUE(program.Log().starts_with("PorticoServer: ")) << program.Log();
        EXPECT_EQ(program.Log().find('\n'), program.Log().size() - 1) << program.Log();
    }

    consumer.Request("GET", "/events");
    consumer.ReadTo("\r\n\r\n");
    api.Signal(SIGTERM);
    EXPECT_EQ(api.WaitForEnd(), 0);
    EXPECT_EQ(consumer.Read(), "closed");
}

}  // namespace
}  // namespace ProcessTests
