// SPDX-License-Identifier: Apache-2.0

#include <cerrno>
#include <csignal>

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include "orlu/DPrint.h"
#include "orlu/Limits.h"
#include "orlu/MfgData.h"
#include "orlu/SystemUtils.h"
#include "support/FaultyFiles.h"
#include "support/LogCapture.h"
#include "support/TemporaryRoot.h"

namespace {

class FilesTest : public testing::Test {
protected:
    FilesTest() { std::filesystem::create_directories(root.Path() + "/dir"); }

    static bool Write(std::string_view text, const std::string& path = kPath)
    {
        return SystemUtils::WriteFile(text.data(), text.data() + text.size(), path);
    }

    std::size_t FilesInFolder() const
    {
        const std::filesystem::directory_iterator folder(root.Path() + "/dir");
        return static_cast<std::size_t>(std::distance(begin(folder), end(folder)));
    }

    static constexpr char kPath[] = "/dir/file";
    LogCapture capture{nullptr, LogCapture::Names::With};
    const TemporaryRoot root;
};

const std::string kOld(3000, 'o');
const std::string kNew(5000, 'n');

// Fails each call of a replacement in turn, until a replacement ends before the failing call.
TEST_F(FilesTest, AReplacementLeavesTheOldOrTheNewWhicheverCallFails)
{
    using Lasting = FaultyFiles::Lasting;
    for (const Lasting lasting : {Lasting::Once, Lasting::FromThenOn}) {
        for (const int error : {EIO, ENOSPC, EDQUOT, EACCES}) {
            bool reached = true;
            for (int call = 1; reached; ++call) {
                SCOPED_TRACE(fmt::format("call {}, error {}", call, error));
                root.Write(kPath, kOld);
                bool written = false;
                {
                    FaultyFiles files;
                    files.LimitBytes(2000);
                    files.FailCall(call, error, lasting);
                    written = Write(kNew);
                    reached = files.Calls() >= call;
                    EXPECT_EQ(files.OpenNow(), 0);
                }
                const std::string content = root.Read(kPath);
                EXPECT_TRUE(content == kNew || (!written && content == kOld));
                // A file that could not be removed is removed by the next replacement.
                EXPECT_EQ(FilesInFolder(), lasting == Lasting::Once ? 1U : FilesInFolder());
                EXPECT_TRUE(Write(kNew));
                EXPECT_EQ(FilesInFolder(), 1U);
            }
        }
    }
}

TEST_F(FilesTest, AKilledReplacementLeavesTheOldOrTheNew)
{
    int status = SIGKILL;
    int news = 0;
    for (int call = 1; status == SIGKILL; ++call) {
        SCOPED_TRACE(call);
        root.Write(kPath, kOld);
        const pid_t writer = ::fork();
        if (writer == 0) {
            FaultyFiles files;
            files.LimitBytes(2000);
            files.KillAt(call);
            ::_exit(Write(kNew) ? 0 : 1);
        }
        ASSERT_EQ(::waitpid(writer, &status, 0), writer);
        const std::string content = root.Read(kPath);
        news += content == kNew ? 1 : 0;
        EXPECT_TRUE(content == kNew || content == kOld);
        EXPECT_TRUE(Write("next"));
        EXPECT_EQ(FilesInFolder(), 1U);
    }
    EXPECT_EQ(status, 0);
    EXPECT_GT(news, 1) << "a kill behind the renaming";
}

TEST_F(FilesTest, AFailedSyncIsNotTriedAgain)
{
    FaultyFiles files;
    ASSERT_TRUE(Write("count"));
    const int calls = files.Calls();
    // The calls are unlink, open, write and then the sync. Only the clean-up follows.
    files.FailCall(4, EIO);
    EXPECT_FALSE(Write(kNew));
    EXPECT_EQ(files.Calls() - calls, 6) << "close and unlink";
    EXPECT_EQ(root.Read(kPath), "count");
    EXPECT_NE(
        capture.Lines().find("1 SystemUtils: /dir/file cannot be written: Input/output error\n"),
        std::string::npos);
}

TEST_F(FilesTest, InterruptionsAndShortCountsAreNoFailures)
{
    FaultyFiles files;
    files.LimitBytes(700);
    files.FailCall(2, EINTR);
    ASSERT_TRUE(Write(kNew));
    for (int call = 3; call <= 5; ++call) {
        files.FailCall(call, EINTR);
        EXPECT_EQ(SystemUtils::ReadFile(kPath), kNew) << call;
    }
    struct stat status {};
    ASSERT_EQ(::stat((root.Path() + kPath).c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777, 0600U);
    EXPECT_EQ(capture.Lines(), "");
}

TEST_F(FilesTest, WhatIsNoRegularFileOrTooLargeIsRefused)
{
    ::mkfifo((root.Path() + "/dir/pipe").c_str(), 0600);
    std::filesystem::create_symlink("nowhere", root.Path() + "/dir/dangling");
    std::filesystem::create_symlink("loop", root.Path() + "/dir/loop");
    root.Write("/dir/large", std::string(Orlu::Limits::kFileBytes + 1, 'x'));
    root.Write("/dir/largest", std::string(Orlu::Limits::kFileBytes, 'x'));
    const std::pair<const char*, const char*> rows[] = {
        {"/dir/absent", ""},
        {"/dir/dangling", ""},
        {"/dir", "2 SystemUtils: /dir cannot be read: not a regular file\n"},
        {"/dir/pipe", "2 SystemUtils: /dir/pipe cannot be read: not a regular file\n"},
        {"/dir/loop",
         "2 SystemUtils: /dir/loop cannot be read: Too many levels of symbolic links\n"},
        {"/dir/large", "2 SystemUtils: /dir/large cannot be read: too large\n"},
    };
    for (const auto& [path, log] : rows) {
        EXPECT_EQ(SystemUtils::ReadFile(path), std::nullopt) << path;
        EXPECT_EQ(capture.Take(), log) << path;
    }
    EXPECT_EQ(SystemUtils::ReadFile("/dir/largest")->size(), Orlu::Limits::kFileBytes);
}

TEST_F(FilesTest, AReplacementFollowsNoLink)
{
    root.Write("/other", "kept");
    std::filesystem::create_symlink(root.Path() + "/other", root.Path() + kPath);
    std::filesystem::create_symlink(root.Path() + "/other", root.Path() + "/dir/file.new");
    ASSERT_TRUE(Write("new"));
    EXPECT_EQ(root.Read("/other"), "kept");
    EXPECT_EQ(root.Read(kPath), "new");
    EXPECT_FALSE(std::filesystem::is_symlink(root.Path() + kPath));
    EXPECT_FALSE(Write("new", "/dir"));
    EXPECT_FALSE(Write("new", "/absent/file"));
}

TEST_F(FilesTest, OnlyAbsolutePathsStandUnderTheRoot)
{
    EXPECT_EQ(SystemUtils::RootedPath("relative"), "relative");
    ::setenv("ORLU_ROOT", "/some/root//", 1);
    EXPECT_EQ(SystemUtils::RootedPath("/a"), "/some/root/a");
    ::unsetenv("ORLU_ROOT");
    EXPECT_EQ(SystemUtils::RootedPath("/a"), "/a");
}

TEST_F(FilesTest, DeletingTellsTheGivenLogger)
{
    root.Write(kPath, "x");
    EXPECT_TRUE(DirUtils::DoesFileExist(kPath));
    EXPECT_TRUE(DirUtils::Delete(kPath, DPrint("Owner")));
    EXPECT_FALSE(DirUtils::DoesFileExist(kPath));
    EXPECT_FALSE(DirUtils::Delete(kPath, DPrint("Owner")));
    EXPECT_EQ(capture.Lines(), "2 Owner: /dir/file cannot be deleted: No such file or directory\n");
}

TEST_F(FilesTest, ManufacturingDataIsReadOnceAndBadDataCountsAsNone)
{
    const std::pair<const char*, std::optional<std::string>> rows[] = {
        {R"({"productType": "eddie", "number": 5})", "eddie"},
        {R"({"productType": 5})", std::nullopt},
        {R"({"productType": "eddie")", std::nullopt},
        {R"(["productType"])", std::nullopt},
        {"", std::nullopt},
    };
    for (const auto& [text, type] : rows) {
        SCOPED_TRACE(text);
        root.Write("/opt/Orlu/etc/MfgData.json", text);
        MfgData::Reload();
        EXPECT_EQ(MfgData::Get("productType"), type);
        root.Write("/opt/Orlu/etc/MfgData.json", R"({"productType": "later"})");
        EXPECT_EQ(MfgData::Get("productType"), type);
        EXPECT_EQ(MfgData::Get("number"), std::nullopt);
    }
    MfgData::Reload();
}

}  // namespace
