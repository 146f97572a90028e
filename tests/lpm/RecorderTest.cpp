// SPDX-License-Identifier: Apache-2.0

#include "lpm/Recorder.h"

#include <gtest/gtest.h>

#include "Bench.h"
#include "support/TemporaryRoot.h"

using namespace Lpm;

namespace {

TEST(Recorder, WritesALineForEachThing)
{
    Bench bench;
    bench.Hold(0x0803);
    BenchClient client(bench, "a");
    client.Send(80, "000100");
    client.Send(82, "000701080301000000");
    client.Send(84, "0003020803");
    client.Transfer("0003220803");
    client.SendCecKey(36, 0);
    bench.blaster.Stop();
    EXPECT_EQ(bench.recorded,
              "{\"ms\": 12345.678, \"id\": 80, \"frame\": \"000100\"}\n"
              "{\"ms\": 12345.678, \"id\": 82, \"frame\": \"000701080301000000\"}\n"
              "{\"ms\": 12345.678, \"ir\": {\"device\": \"0x0803\", \"key\": 1, \"on\": true}}\n"
              "{\"ms\": 12345.678, \"id\": 84, \"frame\": \"0003020803\"}\n"
              "{\"ms\": 12345.678, \"id\": 65539, \"length\": 5, \"type\": 2, \"frame\": "
              "\"0003220803\"}\n"
              "{\"ms\": 12345.678, \"id\": 169, \"value\": 36, \"state\": 0}\n"
              "{\"ms\": 12345.678, \"ir\": {\"device\": \"0x0803\", \"key\": 1, \"on\": false}}\n");
}

TEST(Recorder, AppendsAndSaysWhyItCannot)
{
    const TemporaryRoot root;
    const std::string path = root.Path() + "/record";
    std::string why;
    for (int i = 0; i < 2; ++i) {
        const auto recorder = Recorder::Open(path, why);
        ASSERT_TRUE(recorder) << why;
        recorder->Frame(80, std::string("\0\1\0", 3));
    }
    const std::string text = root.Read("/record");
    EXPECT_EQ(std::ranges::count(text, '\n'), 2);
    EXPECT_NE(text.find("\"id\": 80, \"frame\": \"000100\"}\n"), std::string::npos);
    EXPECT_FALSE(Recorder::Open(root.Path() + "/absent/record", why));
    EXPECT_EQ(why, "No such file or directory");
}

}  // namespace
