#include "LinuxDesktop/OpenFiles/LsofOpenFiles.h"
#include "Platform/Stages.h"
#include "Support/FakePlatform.h"
#include "Support/TemporaryFolder.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <fstream>
#include <sstream>
#include <unistd.h>

namespace stemvault {
namespace {

using testing::Contains;
using testing::Not;

// How odd names are printed and what happens while lsof hangs is tested with the real adapter only.

constexpr int noProcess = 5'000'000;

struct FakeOpenFilesStage {
    static constexpr const char* name = "Fake";

    void open(const std::string& path)
    {
        openFiles.listings[::getpid()] = "p" + std::to_string(::getpid()) + "\nn" + path + "\n";
    }
    void close() { openFiles.listings.clear(); }

    FakeOpenFiles openFiles;
};

struct LsofStage {
    static constexpr const char* name = "Lsof";

    void open(const std::string& path) { file.open(path); }
    void close() { file.close(); }

    std::ifstream file;
    open_files::LsofOpenFiles openFiles;
};

template <typename Stage> struct OpenFilesTests : testing::Test {
};
using OpenFilesStages = testing::Types<FakeOpenFilesStage, LsofStage>;
TYPED_TEST_SUITE(OpenFilesTests, OpenFilesStages, StageNames);

std::vector<std::string> linesOf(const std::optional<std::string>& listing)
{
    EXPECT_TRUE(listing.has_value());
    std::istringstream text(listing.value_or(""));
    std::vector<std::string> lines;
    for (std::string line; std::getline(text, line);)
        lines.push_back(line);
    return lines;
}

TYPED_TEST(OpenFilesTests, ALineForEachFileThatIsOpenNow)
{
    const TemporaryFolder folder;
    const std::string song = folder.write("Song 1.rpp", "");
    TypeParam stage;
    EXPECT_THAT(linesOf(stage.openFiles.listing(::getpid())), Not(Contains("n" + song)));
    stage.open(song);
    EXPECT_THAT(linesOf(stage.openFiles.listing(::getpid())), Contains("n" + song));
    stage.close();
    EXPECT_THAT(linesOf(stage.openFiles.listing(::getpid())), Not(Contains("n" + song)));
}

TYPED_TEST(OpenFilesTests, AProcessThatDoesNotExistHasNoLine)
{
    TypeParam stage;
    EXPECT_THAT(linesOf(stage.openFiles.listing(noProcess)), testing::IsEmpty());
}

} // namespace
} // namespace stemvault
