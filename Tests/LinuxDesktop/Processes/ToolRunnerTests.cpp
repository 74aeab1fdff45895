#include "Foundation/UnicodeText.h"
#include "LinuxDesktop/Processes/ToolRunner.h"
#include "Support/TemporaryFolder.h"

#include <gmock/gmock.h>

#include <fstream>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <thread>

namespace stemvault {
namespace {

using namespace std::chrono_literals;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Optional;

constexpr auto promptly = 5s;

struct ToolRunnerTests : testing::Test {
    std::optional<std::string> shell(const std::string& body)
    {
        return runner.run("/bin/sh", { "-c", body });
    }

    static std::size_t openDescriptors()
    {
        const std::filesystem::directory_iterator entries("/proc/self/fd");
        return static_cast<std::size_t>(std::distance(begin(entries), end(entries)));
    }

    TemporaryFolder folder;
    ToolRunner runner;
};

TEST_F(ToolRunnerTests, GivesTheWholeOutputAsItIs)
{
    const std::size_t descriptors = openDescriptors();
    EXPECT_EQ(runner.run(folder.path("none"), {}), std::nullopt);
    EXPECT_EQ(runner.run(folder.write("not executable", ""), {}), std::nullopt);
    EXPECT_EQ(shell("exit 3"), "");
    EXPECT_EQ(shell("printf 'a\\377\\n'; printf x >&2; kill -9 $$"), "a\xff\n");
    EXPECT_EQ(shell("head -c 5000000 /dev/zero >&2; echo said"), "said\n");
    EXPECT_EQ(shell("head -c 6000000 /dev/zero").value_or("").size(), 6'000'000U);
    EXPECT_EQ(shell("cat; ulimit -Sn; echo $LC_ALL; ls /proc/self/fd; ps -o pgid= $$ >/dev/null; "
                    "grep -E '^Sig(Blk|Ign)' /proc/self/status"),
        "1024\nC.UTF-8\n0\n1\n2\n3\nSigBlk:\t0000000000000000\nSigIgn:\t0000000000000000\n");
    EXPECT_EQ(openDescriptors(), descriptors);
    EXPECT_EQ(::waitpid(-1, nullptr, WNOHANG), -1) << "No child is left, nor a zombie.";
}

TEST_F(ToolRunnerTests, EndsWhatDoesNotEnd)
{
    ToolRunner hasty({ 300ms, 100'000 });
    const auto begun = std::chrono::steady_clock::now();
    for (const char* endless :
        { "trap '' TERM INT HUP; while :; do sleep 60; done", "exec >&-; sleep 60", "yes" })
        EXPECT_EQ(hasty.run("/bin/sh", { "-c", endless }), std::nullopt) << endless;
    EXPECT_THAT(shell("sleep 60 & echo $$"), Optional(EndsWith("\n"))); // The pipe stays open.
    EXPECT_LT(std::chrono::steady_clock::now() - begun, promptly);
    EXPECT_EQ(::waitpid(-1, nullptr, WNOHANG), -1);
}

TEST_F(ToolRunnerTests, AsksTheRealLsof)
{
    const std::pair<const char*, const char*> names[] = { { "\xc3\xa9 ", "\xc3\xa9 " },
        { "e\xcc\x81", "e\xcc\x81" }, { "a\tb\\c\nd", R"(a\tb\\c\nd)" }, { "x\xff", R"(x\xff)" } };
    std::vector<std::ifstream> files;
    for (const auto& [name, printed] : names)
        files.emplace_back(folder.write(name, ""));
    const std::string own = std::to_string(::getpid());
    const auto output = runner.run(runner.pathForTool("lsof"), { "-p", own, "-Fn" });
    ASSERT_THAT(output, Optional(HasSubstr("p" + own + "\n")));
    for (const auto& [name, printed] : names)
        EXPECT_THAT(*output, HasSubstr("\nn" + folder.path(printed) + "\n"));
    EXPECT_TRUE(isValidUTF8(*output));
    EXPECT_EQ(runner.pathForTool("none"), "/usr/bin/none");
}

/// Stands for an lsof whose helper the kernel holds: the helper takes its kill and stays, because
/// its parent, out of reach in another group, does not collect it.
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

TEST_F(ToolRunnerTests, AnswersFromProcWhileLsofIsStuck)
{
    ::prctl(PR_SET_CHILD_SUBREAPER, 1);
    const std::string lsof = folder.write("lsof", stuckLsof);
    std::filesystem::permissions(lsof, std::filesystem::perms::owner_all);
    const std::ifstream open(folder.write("Open\\Song.rpp", ""));
    const auto ask = [&, hasty = std::make_shared<ToolRunner>(ToolRunner::Limits { 2s })](
                         const std::string& process) {
        return hasty->run(lsof, { "-p", process, "-Fn" });
    };
    const std::string own = std::to_string(::getpid());
    std::vector<std::thread> others(2);
    for (std::thread& other : others)
        other = std::thread([&] { EXPECT_NE(ask(own), std::nullopt); });
    const auto answer = ask(own);
    for (std::thread& other : others)
        other.join();
    EXPECT_THAT(answer, Optional(HasSubstr("p" + own + "\nn")));
    EXPECT_THAT(answer, Optional(HasSubstr("\nn" + folder.path(R"(Open\\Song.rpp)") + "\n")));
    EXPECT_EQ(ask("4194305"), ""); // No such process.
    EXPECT_EQ(folder.read("runs"), "-p " + own + " -Fn\n") << "One was started, for all of them.";

    folder.write("well", "");
    EXPECT_NE(ask(own), "well\n") << "It is still stuck.";
    ::kill(std::stoi(folder.read("parent")), SIGKILL);
    const auto deadline = std::chrono::steady_clock::now() + promptly;
    std::optional<std::string> again;
    while (again != "well\n" && std::chrono::steady_clock::now() < deadline) {
        ::poll(nullptr, 0, 10);
        while (::waitpid(-1, nullptr, WNOHANG) > 0) { }
        again = ask(own);
    }
    EXPECT_EQ(again, "well\n");
    ::prctl(PR_SET_CHILD_SUBREAPER, 0);
}

} // namespace
} // namespace stemvault
