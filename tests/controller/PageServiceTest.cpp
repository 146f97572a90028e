// SPDX-License-Identifier: Apache-2.0

#include "controller/PageService.h"

#include <fmt/format.h>
#include <gtest/gtest.h>

#include "ControlledService.h"
#include "ProtoBufs/Trellan_Service.pb.h"
#include "support/VirtualRuntime.h"

namespace Controller {

namespace {

using namespace TrellanServiceMessages;

class PageServiceTest : public ::testing::Test {
protected:
    void Start()
    {
        IL::BreakThread([this] { page.Start(); }, task.get());
        runtime.RunUntilIdle();
    }

    void Key(const std::string& key, bool held)
    {
        const auto body = fmt::format(R"({{"codeset":"T1","key":"{}","held":{}}})", key, held);
        IL::BreakThread([this, body] { effects.Add(page.Key(body).value_or("done")); }, task.get());
        runtime.RunUntilIdle();
    }

    std::string Take() { return effects.Take(); }

    static std::string Pressed(int key, const char* action)
    {
        return fmt::format(
            "service 0 {{\"keyVal\":{},\"keyAction\":\"KEY_ACTION_{}_PRESS\","
            "\"codeset\":\"T1\"}}\n",
            key, action);
    }

    VirtualRuntime runtime;
    Effects effects{runtime};
    Service service{effects};
    std::shared_ptr<NotifyTargetTaskIF> task = IL::CreateTask("page", "");
    PageService page{task.get(), [this](const std::string& path, const std::string& json) {
                         effects.Add(path + " " + json);
                     }};
};

TEST_F(PageServiceTest, HoldsAKeyUntilItsReleaseAnotherKeyOrTheTimeout)
{
    Start();
    Take();
    Key("tv_power", true);
    EXPECT_EQ(Take(), "+0 done\n+0 " + Pressed(36, "CONTINUOUS"));
    runtime.Advance(900);
    Key("tv_power", true);
    runtime.Advance(900);
    EXPECT_EQ(Take(), "+900 done\n");
    Key("play", false);
    Key("tv_power", false);
    Key("tv_power", false);
    EXPECT_EQ(Take(), "+0 done\n+0 done\n+0 " + Pressed(36, "END") + "+0 done\n");
    Key("tv_power", true);
    Key("play", true);
    EXPECT_EQ(Take(), "+0 done\n+0 " + Pressed(36, "CONTINUOUS") + "+0 done\n+0 " +
                          Pressed(36, "END") + "+0 " + Pressed(85, "CONTINUOUS"));
    runtime.Advance(5000);
    EXPECT_EQ(Take(), "+1000 " + Pressed(85, "END"));
}

TEST_F(PageServiceTest, SendsAnEndPressAgainIfTheStateHasChangedSinceThePress)
{
    const auto sync = [this](bool ended) {
        BlasterSync_t message;
        message.set_syncstate(ended);
        service.Event(9, message);
        runtime.RunUntilIdle();
    };
    const std::string cecEnd =
        "service 0 {\"keyVal\":85,\"keyAction\":\"KEY_ACTION_END_PRESS\",\"codeset\":\"\"}\n";
    Start();
    Key("play", true);
    sync(false);
    Take();
    Key("play", false);
    EXPECT_EQ(Take(), "+0 done\n+0 " + Pressed(85, "END") + "+0 " + cecEnd);
    sync(true);
    EXPECT_TRUE(Take().ends_with("+0 " + Pressed(85, "END")));
    sync(true);
    Key("play", true);
    Take();
    Key("play", false);
    sync(true);
    EXPECT_EQ(Take(), "+0 done\n+0 " + Pressed(85, "END"));
}

TEST_F(PageServiceTest, RefusesWhatIsNoPressAndPressesWithoutAService)
{
    for (const char* body : {"", "[]", "{}", R"({"codeset":1,"key":"play","held":true})",
                             R"({"codeset":"","key":"nothing","held":true})",
                             R"({"codeset":"","key":"play","held":1})"}) {
        EXPECT_TRUE(page.Key(body).value_or("").starts_with("{\"code\":400,")) << body;
    }
    EXPECT_TRUE(page.Key(R"({"codeset":"","key":"play","held":true})")
                    .value_or("")
                    .starts_with("{\"code\":503,"));
}

TEST_F(PageServiceTest, ReportsTheServiceAndReconnectsWithSourcesAndAPendingRelease)
{
    page.TakeSources(R"({"sources":[{"sourceName":"TV","status":"READY","details":{"ciCode":"T1"}},
                                    {"sourceName":"BD","status":"UNAVAILABLE","details":{"ciCode":"Y1"}}]})");
    Start();
    EXPECT_EQ(
        Take(),
        "+0 /remote/state {\"blaster\":true,\"cloud\":false,\"service\":true,\"syncing\":false}\n"
        "+0 service 1 {\"ciCode\":[\"T1\"]}\n+0 service 6 {}\n");
    CloudConnectState_t cloud;
    cloud.set_connectstate(true);
    service.Event(7, cloud);
    runtime.RunUntilIdle();
    EXPECT_EQ(
        Take(),
        "+0 /remote/state {\"blaster\":true,\"cloud\":true,\"service\":true,\"syncing\":false}\n");
    service.answers = false;
    Key("play", true);
    Take();
    service.Close();
    runtime.RunUntilIdle();
    EXPECT_EQ(
        Take(),
        "+0 /remote/state {\"blaster\":true,\"cloud\":false,\"service\":false,\"syncing\":false}\n"
        "+0 /remote/state {\"blaster\":true,\"cloud\":false,\"service\":true,\"syncing\":false}\n"
        "+0 " +
            Pressed(85, "END") + "+0 service 1 {\"ciCode\":[\"T1\"]}\n+0 service 6 {}\n");
    Key("play", true);
    Take();
    runtime.Advance(3000);
    EXPECT_EQ(Take(), "+1000 " + Pressed(85, "END") +
                          "+3000 /remote/state {\"blaster\":false,\"cloud\":false,"
                          "\"service\":true,\"syncing\":false}\n");
}

}  // namespace

}  // namespace Controller
