#include "LinuxDesktop/OpenFiles/ToolRunner.h"
#include "Support/TemporaryFolder.h"

#include <gmock/gmock.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <sys/wait.h>

namespace stemvault::open_files {
namespace {

using namespace std::literals;
using testing::EndsWith;
using testing::Optional;

struct ToolRunnerTests : testing::Test {
    std::optional<std::string> shell(const std::string& body)
    {
        return runner.run("/bin/sh", { "-c", body }).output;
    }

    static std::size_t openDescriptors()
    {
        const std::filesystem::directory_iterator entries("/proc/self/fd");
        return static_cast<std::size_t>(std::distance(begin(entries), end(entries)));
    }

    TemporaryFolder folder;
    ToolRunner runner { ToolRunner::Limits {} };
};

TEST_F(ToolRunnerTests, GivesTheWholeOutputAsItIs)
{
    const std::size_t descriptors = openDescriptors();
    EXPECT_EQ(runner.run(folder.path("none"), {}).output, std::nullopt);
    EXPECT_EQ(runner.run(folder.write("not executable", ""), {}).output, std::nullopt);
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

TEST_F(ToolRunnerTests, TheToolsSpeakUTF8InAnyLocale)
{
    ::setenv("LC_ALL", "de_DE", 1);
    ToolRunner runnerThere { ToolRunner::Limits {} };
    ::unsetenv("LC_ALL");
    EXPECT_EQ(runnerThere.run("/bin/grep", { "-z", "^LC_ALL=", "/proc/self/environ" }).output,
        "LC_ALL=C.UTF-8\0"s);
}

TEST_F(ToolRunnerTests, EndsWhatDoesNotEnd)
{
    EXPECT_EQ(ToolRunner::Limits {}.time, 10s);
    ToolRunner hasty({ .time = 300ms, .output = 100'000 });
    const auto begun = std::chrono::steady_clock::now();
    for (const char* endless :
        { "trap '' TERM INT HUP; while :; do sleep 60; done", "exec >&-; sleep 60", "yes" })
        EXPECT_EQ(hasty.run("/bin/sh", { "-c", endless }).output, std::nullopt) << endless;
    // sleep keeps the pipe open.
    EXPECT_THAT(shell("sleep 60 & echo $$"), Optional(EndsWith("\n")));
    EXPECT_LT(std::chrono::steady_clock::now() - begun, 5s);
    EXPECT_EQ(::waitpid(-1, nullptr, WNOHANG), -1);
}

} // namespace
} // namespace stemvault::open_files
