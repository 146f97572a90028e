// SPDX-License-Identifier: Apache-2.0

#include "CodesetFixture.h"
#include "orlu/Files.h"
#include "support/FaultyFiles.h"

namespace {

constexpr const char* kThree =
    R"({"codesets":[)"
    R"({"name":"C0123","details":{"devNum":4219,"ambiguousKeyBitMap":3,"checksum":"c1","safeToBlast":true,"keyMap":{"keys":[42,19,300]}}},)"
    R"({"name":"S0456","details":{"devNum":12744,"keyMap":{}}},)"
    R"({"name":"T2051","details":{"devNum":2051,"checksum":"c3","keyMap":{"keys":[8]}}}]})";
constexpr const char* kC = "C0123 107b 3 c1 safe 2a132c;";
constexpr const char* kS = "S0456 31c8 0  unsafe ;";
constexpr const char* kT = "T2051 803 0 c3 unsafe 08;";

std::string Replaced(std::string text, const std::string& from, const std::string& to)
{
    return text.replace(text.find(from), from.size(), to);
}

class CodesetStore : public CodesetFixture {
protected:
    // Some file systems wait for the disk when a file is renamed over another one.
    void Remove() { std::filesystem::remove(root.Path() + kStorePath); }

    std::string MapOf(const std::string& text)
    {
        Remove();
        root.Write(kStorePath, text);
        Restart();
        handler->InitCodesetMap();
        return Map();
    }
};

TEST_F(CodesetStore, ReadsWhatItWrote)
{
    const std::string all = std::string(kC) + kS + kT;
    EXPECT_EQ(MapOf(kThree), all);
    root.Write(kStorePath, "");
    handler->StoreCodesetConfig();
    EXPECT_EQ(MapOf(root.Read(kStorePath)), all);
}

TEST_F(CodesetStore, IsEmptyWithoutAFile)
{
    handler->InitCodesetMap();
    EXPECT_EQ(Map(), "");
    EXPECT_EQ(TakeLog(), std::string("3 CodesetConfig file is ") + kStorePath + "\n");
}

TEST_F(CodesetStore, SkipsWhatLacksDetailsAndGivesUpWithoutKeyMap)
{
    EXPECT_EQ(MapOf(Replaced(kThree, R"("details":{"devNum":12744,"keyMap":{}})", R"("x":1)")),
              std::string(kC) + kT);
    EXPECT_EQ(MapOf(Replaced(kThree, R"(,"keyMap":{}})", "}")), "");
    EXPECT_EQ(MapOf(R"({"codesets":[{"details":{"keyMap":{}}}]})"), " 0 0  unsafe ;");
    EXPECT_EQ(MapOf(Replaced(kThree, "S0456", "C0123")),
              std::string("C0123 31c8 0  unsafe ;") + kT);
}

TEST_F(CodesetStore, TakesADamagedFileAsNone)
{
    // A thousand writes would take long if each waited for the disk.
    FaultyFiles files;
    files.SkipSync();
    const std::string good = kThree;
    for (std::size_t size = 0; size < good.size(); ++size) {
        EXPECT_EQ(MapOf(good.substr(0, size)), "") << size;
        EXPECT_EQ(root.Read(kStorePath), good.substr(0, size)) << "left alone";
    }
    EXPECT_NE(TakeLog().find("1 codeset config file from disk failed markup error - "),
              std::string::npos);
    for (std::size_t at = 0; at < good.size(); ++at) {
        for (const char damage : {'\0', '"', '9'}) {
            std::string bad = good;
            bad[at] = damage;
            MapOf(bad);  // whatever comes out of it can be written and read again
            const std::string map = Map();
            Remove();
            handler->StoreCodesetConfig();
            ASSERT_EQ(MapOf(root.Read(kStorePath)), map) << at;
        }
    }
}

TEST_F(CodesetStore, LeavesAWholeFileWhereverAWriteFails)
{
    MapOf(kThree);
    handler->cacheCodesets(List({"T2051"}));
    handler->StoreCodesetConfig();
    const std::string written = root.Read(kStorePath);
    int failures = 0;
    for (bool failed = true; failed; ++failures) {
        root.Write(kStorePath, kThree);
        FaultyFiles faulty;
        faulty.FailCall(failures + 1, EIO);
        handler->StoreCodesetConfig();
        failed = faulty.Calls() > failures;
        const std::string now = root.Read(kStorePath);
        EXPECT_TRUE(now == kThree || now == written) << failures << now;
        EXPECT_EQ(Map(), kT);
    }
    EXPECT_GT(failures, 4);
}

class WhiteListStatus : public CodesetStore {
protected:
    void SetUp() override { MapOf(kThree); }

    std::string StatusWith(const std::string& list)
    {
        root.Write(kWhiteListPath, list);
        TakeLog();
        handler->AddWhiteListStatus();
        std::string text;
        for (const auto& [name, entry] : handler->GetCodesets()) {
            text += entry.safeToBlast ? name + " " : "";
        }
        return text + handler->GetWhiteListVersion();
    }
};

TEST_F(WhiteListStatus, NeedsNameAndChecksum)
{
    EXPECT_EQ(handler->GetWhiteListVersion(), "uninitialized");
    EXPECT_EQ(StatusWith(R"({"version":"7","ciCodes":[{"name":"T2051","checksum":["x","c3"]},)"
                         R"({"name":"C0123","checksum":["c3"]}]})"),
              "T2051 7");
    EXPECT_EQ(TakeLog(),
              std::string("3 WhiteList file is ") + kWhiteListPath +
                  "\n3 White list file successfully"
                  R"({"version":"7","ciCodes":[{"name":"T2051","checksum":["x","c3"]},)"
                  R"({"name":"C0123","checksum":["c3"]}]})"
                  "\n3 Codeset C0123 in whiteList but checksum c1 isn't\n"
                  "3 Codeset S0456 NOT in whiteList\n"
                  "3 Codeset T2051 in whiteList AND checksum okay, enabling continuous blasting\n");
    EXPECT_EQ(StatusWith(R"({"ciCodes":[{"name":"T2051","checksum":["C3"]}]})"), "");
    EXPECT_EQ(StatusWith(R"({"ciCodes":[{"name":"S0456","checksum":[""]}]})"), "S0456 ");
    EXPECT_EQ(StatusWith(R"({"ciCodes":[{"name":"T2051"},{"name":"T2051","checksum":["c3"]}]})"),
              "");
}

TEST_F(WhiteListStatus, StaysAsItWasWithADamagedList)
{
    EXPECT_EQ(StatusWith(R"({"version":"7","ciCodes":[{"name":"T2051","checksum":["c3"]}]})"),
              "T2051 7");
    EXPECT_EQ(StatusWith(R"({"version":"8","ciCodes":[{"name")"), "T2051 7");
    EXPECT_NE(TakeLog().find("1 White list file from disk failed markup error - "),
              std::string::npos);
}

TEST_F(WhiteListStatus, ApprovesNothingWithoutAList)
{
    handler->AddWhiteListStatus();
    EXPECT_EQ(Map().find(" safe "), std::string::npos);
    EXPECT_EQ(handler->GetWhiteListVersion(), "");
    EXPECT_NE(TakeLog().find(std::string("1 Failed to load whitelist file ") + kWhiteListPath +
                             "\n3 White list file successfully{}\n"),
              std::string::npos);
}

}  // namespace
