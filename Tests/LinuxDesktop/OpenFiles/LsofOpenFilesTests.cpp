#include "Foundation/UnicodeText.h"
#include "LinuxDesktop/OpenFiles/LsofFallback.h"
#include "LinuxDesktop/OpenFiles/LsofOpenFiles.h"
#include "Support/TemporaryFolder.h"

#include <gmock/gmock.h>

#include <array>
#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <poll.h>
#include <string>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace stemvault::open_files {
namespace {

using namespace std::chrono_literals;
using testing::AllOf;
using testing::HasSubstr;
using testing::Not;
using testing::Optional;

constexpr auto promptly = 5s;

struct LsofOpenFilesTests : testing::Test {
    TemporaryFolder folder;
};

TEST_F(LsofOpenFilesTests, AsksTheRealLsof)
{
    const std::pair<const char*, const char*> names[] = { { "\xc3\xa9 ", "\xc3\xa9 " },
        { "e\xcc\x81", "e\xcc\x81" }, { "a\tb\\c\nd", R"(a\tb\\c\nd)" }, { "x\xff", R"(x\xff)" } };
    std::vector<std::ifstream> files;
    for (const auto& [name, printed] : names)
        files.emplace_back(folder.write(name, ""));
    const std::string own = std::to_string(::getpid());
    const auto output = LsofOpenFiles().listing(::getpid());
    ASSERT_THAT(output, Optional(HasSubstr("p" + own + "\n")));
    for (const auto& [name, printed] : names)
        EXPECT_THAT(*output, HasSubstr("\nn" + folder.path(printed) + "\n"));
    EXPECT_TRUE(isValidUTF8(*output));
}

TEST_F(LsofOpenFilesTests, GivesNothingWhereThereIsNoLsof)
{
    LsofOpenFiles without(folder.path("none"), {});
    EXPECT_EQ(without.listing(::getpid()), std::nullopt);
}

/// Stands in for an lsof whose helper is blocked in the kernel: the helper remains after it is
/// killed, because its parent, in another process group and so not killed, does not reap it.
constexpr const char* stuckLsof = R"(#!/usr/bin/perl
use strict; use warnings;
my ($folder) = $0 =~ m{(.*)/};
open(my $runs, '>>', "$folder/runs"); print $runs "@ARGV\n"; close $runs;
if (-e "$folder/well") { print "well\n"; exit; }
my $group = $$;
pipe(my $read, my $write);
if (!fork) {
    setpgrp(0, 0);
    if (!fork) { setpgrp(0, $group); syswrite $write, 'x'; sleep 3600; exit; }
    open(my $parent, '>', "$folder/parent"); print $parent $$; close $parent;
    sleep 3600; exit;
}
sysread $read, my $byte, 1;
sleep 3600;
)";

TEST_F(LsofOpenFilesTests, AnswersFromProcWhileLsofIsStuck)
{
    ::prctl(PR_SET_CHILD_SUBREAPER, 1);
    const std::string lsof = folder.write("lsof", stuckLsof);
    std::filesystem::permissions(lsof, std::filesystem::perms::owner_all);
    const std::ifstream open(folder.write("Open\\Song.rpp", ""));
    LsofOpenFiles hasty(lsof, { .tool = { .time = 2s }, .rest = 0s });
    const auto ask = [&](pid_t process) { return hasty.listing(process); };
    const pid_t self = ::getpid();
    const std::string own = std::to_string(self);
    std::vector<std::thread> others(2);
    for (std::thread& other : others)
        other = std::thread([&] { EXPECT_NE(ask(self), std::nullopt); });
    const auto answer = ask(self);
    for (std::thread& other : others)
        other.join();
    EXPECT_THAT(answer, Optional(HasSubstr("p" + own + "\nn")));
    EXPECT_THAT(answer, Optional(HasSubstr("\nn" + folder.path(R"(Open\\Song.rpp)") + "\n")));
    EXPECT_EQ(ask(4194305), ""); // No such process.
    EXPECT_EQ(folder.read("runs"), "-p " + own + " -Fn\n") << "One was started, for all of them.";

    folder.write("well", "");
    EXPECT_NE(ask(self), "well\n") << "It is still stuck.";
    ::kill(std::stoi(folder.read("parent")), SIGKILL);
    const auto deadline = std::chrono::steady_clock::now() + promptly;
    std::optional<std::string> again;
    while (again != "well\n" && std::chrono::steady_clock::now() < deadline) {
        ::poll(nullptr, 0, 10);
        while (::waitpid(-1, nullptr, WNOHANG) > 0) { }
        again = ask(self);
    }
    EXPECT_EQ(again, "well\n");
    ::prctl(PR_SET_CHILD_SUBREAPER, 0);
}

TEST_F(LsofOpenFilesTests, TheAnswerFromProcHasEachKindOfOpenFile)
{
    const auto link = [&](const char* name, const char* target) {
        std::filesystem::create_symlink(target, folder.path(name));
    };
    folder.makeFolder("7/fd");
    link("7/cwd", "/songs");
    link("7/root", "/");
    link("7/exe", "/opt/daw");
    link("7/fd/10", "/songs/b.wav");
    link("7/fd/9", "/songs/a.wav");
    folder.write("7/maps", "0-1 r-xp 0 8:1 5 /opt/daw\n1-2 r--s 0 8:1 6 /songs/mapped.wav\n");
    EXPECT_EQ(lsofFallback(7, folder.path()),
        "p7\nn/songs\nn/\nn/opt/daw\nn/songs/mapped.wav\nn/songs/a.wav\nn/songs/b.wav\n");
}

/// Stands in for an lsof that takes too long but can be killed.
constexpr const char* slowLsof = R"(#!/bin/sh
folder=${0%/*}
echo "$@" >> "$folder/runs"
[ -e "$folder/well" ] && echo well || exec sleep 3600
)";

TEST_F(LsofOpenFilesTests, ASlowLsofKeepsNoThreads)
{
    const std::string lsof = folder.write("lsof", slowLsof);
    std::filesystem::permissions(lsof, std::filesystem::perms::owner_all);
    LsofOpenFiles asked(lsof, { .tool = { .time = 3s }, .turn = 50ms, .rest = 1h });
    const std::string own = std::to_string(::getpid());
    const auto ask = [&] { return asked.listing(::getpid()); };
    std::atomic<int> answers = 0;
    std::vector<std::thread> looks(16);
    const auto begun = std::chrono::steady_clock::now();
    for (std::thread& look : looks)
        look = std::thread([&] {
            EXPECT_THAT(ask(), Optional(HasSubstr("p" + own + "\nn")));
            ++answers;
        });
    while (answers < 15 && std::chrono::steady_clock::now() < begun + 2s)
        ::poll(nullptr, 0, 5);
    EXPECT_EQ(answers, 15) << "All but the one that runs lsof.";
    for (std::thread& look : looks)
        look.join();

    folder.write("well", "");
    EXPECT_THAT(ask(), Optional(HasSubstr("p" + own + "\nn"))) << "It is left alone for a while.";
    EXPECT_EQ(folder.read("runs"), "-p " + own + " -Fn\n");

    std::filesystem::remove(folder.path("well"));
    LsofOpenFiles forgiving(lsof, { .tool = { .time = 50ms }, .rest = 50ms });
    std::optional<std::string> answer = forgiving.listing(::getpid());
    EXPECT_NE(answer, "well\n");
    folder.write("well", "");
    const auto deadline = std::chrono::steady_clock::now() + promptly;
    while (answer != "well\n" && std::chrono::steady_clock::now() < deadline)
        answer = forgiving.listing(::getpid());
    EXPECT_EQ(answer, "well\n") << "After the while it is asked again.";
}

TEST_F(LsofOpenFilesTests, LeavesOutWhatASandboxSeesUnderOurPaths)
{
    folder.write("there/Song.rpp", "");
    folder.write("here/Song.rpp", "");
    // The sandbox sees the first folder at the path of the second one.
    const std::string body = "mount --bind " + folder.path("there") + " " + folder.path("here")
        + " && exec 3<" + folder.path("here/Song.rpp") + " 4<" + folder.path("there/Song.rpp")
        + " && echo $$ && exec sleep 3600";
    FILE* const sandbox = ::popen(("exec unshare -rm sh -c '" + body + "' 2>&1").c_str(), "r");
    std::array<char, 256> line {};
    std::string process = ::fgets(line.data(), line.size(), sandbox) != nullptr ? line.data() : "";
    process.resize(process.find_last_not_of('\n') + 1);
    const bool isThere =
        !process.empty() && process.find_first_not_of("0123456789") == std::string::npos;
    if (isThere) {
        EXPECT_THAT(LsofOpenFiles().listing(std::stoi(process)),
            Optional(AllOf(HasSubstr("\nn" + folder.path("there/Song.rpp") + "\n"),
                Not(HasSubstr("\nn" + folder.path("here/Song.rpp"))))));
        ::kill(std::stoi(process), SIGKILL);
    }
    ::pclose(sandbox);
    if (!isThere)
        GTEST_SKIP() << "No sandboxes here: " << process;
}

} // namespace
} // namespace stemvault::open_files
