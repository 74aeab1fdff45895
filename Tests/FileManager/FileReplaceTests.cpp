#include "FileManager/CopyFixture.h"
#include "FileManager/TemporaryItem.h"

#include <filesystem>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <thread>

namespace stemvault {
namespace {

using testing::Contains;
using testing::ElementsAre;

class ReplaceTest : public CopyTest {
protected:
    ReplaceTest() { options.ifExists = IfExists::Replace; }

    void makeOld(const std::string& kind) const
    {
        TemporaryFolder::removeAll(target);
        if (kind == "file")
            files.write("to/Mix.wav", "old");
        else if (kind == "link")
            std::filesystem::create_symlink(files.write("linked", "linked"), target);
        else
            files.write("to/Mix.wav/Old/a.wav", "old");
        if (kind == "closed folder")
            ::chmod(files.path("to/Mix.wav/Old").c_str(), 0);
    }

    /// Creates what a killed copy leaves behind: half a file, open until the result is destroyed.
    [[nodiscard]] FileDescriptor createLeftover(const std::string& name) const
    {
        const std::string draft = files.write("to/.syncthing.~" + name + ".tmp", "half");
        FileDescriptor file(::open(draft.c_str(), O_RDWR | O_CLOEXEC));
        markStaged(file.get());
        return file;
    }

    std::string album = [this] {
        files.write("album/Song/Mix.wav", content);
        std::filesystem::create_symlink("Song/Mix.wav", files.path("album/link"));
        EXPECT_EQ(::mkfifo(files.path("album/pipe").c_str(), 0600), 0);
        EXPECT_EQ(::chmod(files.path("album/Song").c_str(), 0500), 0);
        return files.path("album");
    }();
};

TEST_F(ReplaceTest, PutsTheNewInPlaceOfTheOld)
{
    const Refusal noExchange = noRename(RENAME_EXCHANGE | RENAME_NOREPLACE, EINVAL);
    for (const std::string old : { "file", "link", "folder", "closed folder" })
        for (const bool isFolder : { false, true })
            for (const auto& refusals : { std::vector<Refusal> {}, { noExchange } }) {
                SCOPED_TRACE(old + (isFolder ? " by a folder" : " by a file"));
                makeOld(old);
                const auto copied = copyItem(isFolder ? album : source, target, with(refusals));
                ASSERT_TRUE(copied) << copied.error();
                EXPECT_EQ(files.read(isFolder ? "to/Mix.wav/Song/Mix.wav" : "to/Mix.wav"), content);
                EXPECT_THAT(names(), ElementsAre("Mix.wav"));
            }
    EXPECT_EQ(files.read("linked"), "linked");
}

TEST_F(ReplaceTest, KeepsTheOldWhenAnythingFails)
{
    const Refusal noSharing = no(&SystemCalls::clone, EOPNOTSUPP);
    const std::vector<Refusal> rows[] = {
        { noSharing, no(&SystemCalls::copyFileRange, ENOSPC) }, { failsAtClose(EIO) },
        { noUnnamed, failsAtClose(EIO) }, { no(&SystemCalls::renameat2, EACCES) },
        { no(&SystemCalls::renameat2, EINVAL) }, // Nothing can be moved aside either.
        { noRename(RENAME_EXCHANGE, EINVAL),
            noRename(RENAME_NOREPLACE, EIO) }, // The old item is moved aside first.
    };
    for (const auto& refusals : rows) {
        makeOld("folder");
        EXPECT_FALSE(copyItem(source, target, with(refusals)));
        EXPECT_FALSE(copyItem(album, target, with(refusals)));
        EXPECT_EQ(files.read("to/Mix.wav/Old/a.wav"), "old");
        EXPECT_THAT(names(), ElementsAre("Mix.wav"));
    }
    makeOld("file");
    EXPECT_FALSE(copyItem(source, target, with({ no(&SystemCalls::renameat2, EACCES) })));
    EXPECT_EQ(files.read("to/Mix.wav"), "old");
}

TEST_F(ReplaceTest, CopiesAFolderAsItIs)
{
    ASSERT_TRUE(copyItem(album, files.path("to/Album")));
    EXPECT_THAT(names("to/Album"), ElementsAre("Song", "link", "pipe"));
    EXPECT_EQ(std::filesystem::read_symlink(files.path("to/Album/link")), "Song/Mix.wav");
    EXPECT_TRUE(std::filesystem::is_fifo(files.path("to/Album/pipe")));
    EXPECT_EQ(files.read("to/Album/Song/Mix.wav"), content);
    const auto song = std::filesystem::status(files.path("to/Album/Song"));
    EXPECT_EQ(song.permissions(), std::filesystem::perms { 0500 });
    for (const char* name : { "", "/Song", "/Song/Mix.wav" })
        EXPECT_EQ(std::filesystem::last_write_time(album + name),
            std::filesystem::last_write_time(files.path("to/Album") + name));
    const auto more = meanwhile([this] { files.write("album/" + temporaryName("a"), "new"); });
    EXPECT_FALSE(copyItem(album, files.path("to/Never"), with({ more }))) << "it keeps changing";
    EXPECT_THAT(names(), ElementsAre("Album"));
}

TEST_F(ReplaceTest, ShowsWatchersARenameAlone)
{
    const FolderWatch watch(files.path("to"), IN_CREATE | IN_MODIFY | IN_MOVED_TO | IN_CLOSE_WRITE);
    ASSERT_TRUE(copyItem(source, target));
    EXPECT_THAT(watch.events("Mix.wav"), ElementsAre(IN_MOVED_TO, IN_CLOSE_WRITE));
    ASSERT_TRUE(copyItem(source, target, options));
    EXPECT_THAT(watch.events("Mix.wav"), ElementsAre(IN_MOVED_TO, IN_CLOSE_WRITE));
    std::filesystem::remove(target);
    std::filesystem::create_directory(target);
    ASSERT_TRUE(copyItem(source, target, options));
    EXPECT_THAT(watch.events("Mix.wav"), ElementsAre(IN_MOVED_TO, IN_CLOSE_WRITE));
}

// A network drive without a cache stores a file when it is closed. If the file is then opened for
// writing again and nothing is written, the drive stores it again, empty.
TEST_F(ReplaceTest, ClosesANamedDraftOnceAndBeforeItGetsItsNameOrGoes)
{
    const FolderWatch watch(
        files.path("to"), IN_CREATE | IN_OPEN | IN_MOVED_TO | IN_CLOSE_WRITE | IN_DELETE);
    ASSERT_TRUE(copyItem(source, target, with({ noUnnamed })));
    EXPECT_THAT(watch.events(), ElementsAre(IN_CREATE, IN_OPEN, IN_CLOSE_WRITE, IN_MOVED_TO));
    EXPECT_FALSE(copyItem(
        source, files.path("to/B.wav"), with({ noUnnamed, no(&SystemCalls::fsync, EIO) })));
    EXPECT_THAT(watch.events(), ElementsAre(IN_CREATE, IN_OPEN, IN_CLOSE_WRITE, IN_DELETE));
}

TEST_F(ReplaceTest, RemovesOnlyLeftoversThatNobodyUses)
{
    const FileDescriptor used = createLeftover("Used.wav.aaaaaa");
    createLeftover("Gone.wav.bbbbbb").reset();
    files.write("to/.syncthing.~Empty.wav.cccccc.tmp", "");
    files.write("to/.syncthing.~Gone.dddddd.tmp/inner/a.wav", "half");
    const std::string folder = files.path("to/.syncthing.~Gone.dddddd.tmp");
    markStaged(FileDescriptor(::open(folder.c_str(), O_RDONLY | O_CLOEXEC)).get());

    files.write("to/.syncthing.~Unmarked.wav.eeeeee.tmp", "theirs");
    files.write("to/.syncthing.~Unmarked.ffffff.tmp/a.wav", "theirs");
    files.write("to/.syncthing.~Other name.tmp", "theirs");
    std::filesystem::create_symlink("x", files.path("to/.syncthing.~Link.wav.gggggg.tmp"));

    ASSERT_TRUE(copyItem(source, target, options));
    EXPECT_THAT(names(), Contains(".syncthing.~Gone.wav.bbbbbb.tmp")) << "younger than a day";
    options.leftoverAge = std::chrono::seconds(0);
    const auto another = meanwhile([this] {
        std::thread([this] { EXPECT_TRUE(copyItem(album, files.path("to/B"), options)); }).join();
    });
    ASSERT_TRUE(copyItem(source, target, with({ noUnnamed, another })));
    EXPECT_EQ(files.read("to/Mix.wav"), content) << "the other spared what was half done";
    EXPECT_THAT(names(),
        ElementsAre(".syncthing.~Link.wav.gggggg.tmp", ".syncthing.~Other name.tmp",
            ".syncthing.~Unmarked.ffffff.tmp", ".syncthing.~Unmarked.wav.eeeeee.tmp",
            ".syncthing.~Used.wav.aaaaaa.tmp", "B", "Mix.wav"));
}

TEST_F(ReplaceTest, LeavesLeftoversOfAnotherUser)
{
    if (::geteuid() != 0)
        GTEST_SKIP() << "only root can give a file to another user";
    ASSERT_EQ(::fchown(createLeftover("Theirs.wav.hhhhhh").get(), 12345, 12345), 0);
    options.leftoverAge = std::chrono::seconds(0);
    ASSERT_TRUE(copyItem(source, target, options));
    EXPECT_THAT(names(), ElementsAre(".syncthing.~Theirs.wav.hhhhhh.tmp", "Mix.wav"));
}

TEST_F(ReplaceTest, LeavesWhatAnotherUserHasInAReplacedFolder)
{
    if (::geteuid() != 0)
        GTEST_SKIP() << "only root can give a folder to another user";
    for (const std::string name : { "theirs", "closed" })
        files.write("to/Mix.wav/" + name + "/a.wav", "theirs");
    std::filesystem::permissions(files.path("to/Mix.wav/closed"), std::filesystem::perms { 0700 });
    for (const char* mine : { "", "from", "to", "to/Mix.wav" })
        ASSERT_EQ(::chown(files.path(mine).c_str(), 65534, 65534), 0);
    asOrdinaryUser([&] { EXPECT_TRUE(copyItem(source, target, options)); });
    EXPECT_TRUE(std::filesystem::is_regular_file(target));
    ASSERT_EQ(names().size(), 2U);
    const std::string displaced = "to/" + *names().begin();
    for (const std::string name : { "/theirs", "/closed" })
        EXPECT_EQ(files.read(displaced + name + "/a.wav"), "theirs");
}

TEST_F(ReplaceTest, RemovesALeftoverThatItsOwnerMayNotWrite)
{
    createLeftover("Gone.wav.bbbbbb").reset();
    ASSERT_EQ(::chmod(files.path("to/.syncthing.~Gone.wav.bbbbbb.tmp").c_str(), 0444), 0);
    options.leftoverAge = std::chrono::seconds(0);
    for (const char* item : { "", "to", "to/.syncthing.~Gone.wav.bbbbbb.tmp" })
        if (::geteuid() == 0) {
            EXPECT_EQ(::chown(files.path(item).c_str(), 65534, 65534), 0);
        }
    asOrdinaryUser([&] { EXPECT_TRUE(copyItem(source, target, options)); });
    EXPECT_THAT(names(), ElementsAre("Mix.wav"));
}

TEST_F(ReplaceTest, ClosesEveryDescriptor)
{
    const auto openCount = [] {
        return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
    };
    const auto before = openCount();
    for (int i = 0; i < 5; ++i) {
        EXPECT_TRUE(copyItem(source, target, options));
        EXPECT_TRUE(copyItem(album, files.path("to/Album"), options));
        EXPECT_FALSE(copyItem(source, target));
        EXPECT_FALSE(copyItem(album, album + "/Song/b", options));
    }
    EXPECT_EQ(openCount(), before);
}

} // namespace
} // namespace stemvault
