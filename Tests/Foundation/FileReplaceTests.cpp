#include "Foundation/CopyFixture.h"
#include "Foundation/TemporaryItem.h"

#include <cstring>
#include <set>
#include <sys/file.h>
#include <sys/inotify.h>
#include <sys/stat.h>
#include <thread>

namespace stemvault {
namespace {

using testing::Contains;
using testing::ElementsAre;

class ReplaceTest : public CopyTest {
protected:
    ReplaceTest() { options.ifTaken = IfTaken::Replace; }

    void makeOld(const std::string& kind) const
    {
        std::filesystem::remove_all(target);
        if (kind == "file")
            files.write("to/Mix.wav", "old");
        else if (kind == "link")
            std::filesystem::create_symlink(files.write("linked", "linked"), target);
        else
            files.write("to/Mix.wav/Old/a.wav", "old");
        if (kind == "closed folder")
            std::filesystem::permissions(
                files.path("to/Mix.wav/Old"), std::filesystem::perms::none);
    }

    std::string album = [this] {
        files.write("album/Song/Mix.wav", content);
        std::filesystem::create_symlink("Song/Mix.wav", files.path("album/link"));
        EXPECT_EQ(::mkfifo(files.path("album/pipe").c_str(), 0600), 0);
        EXPECT_EQ(::chmod(files.path("album/Song").c_str(), 0555), 0);
        return files.path("album");
    }();
};

TEST_F(ReplaceTest, PutsTheNewInPlaceOfTheOld)
{
    for (const std::string old : { "file", "link", "folder", "closed folder" })
        for (const bool isFolder : { false, true })
            for (const bool isExchangeKnown : { true, false }) {
                const auto trace = old + (isFolder ? " by a folder" : " by a file");
                makeOld(old);
                CopyOptions refusing = options;
                if (!isExchangeKnown)
                    refuseRename(refusing.calls, RENAME_EXCHANGE | RENAME_NOREPLACE, EINVAL);
                const auto copied = copyItem(isFolder ? album : source, target, refusing);
                ASSERT_TRUE(copied) << trace << copied.error();
                EXPECT_EQ(files.read(isFolder ? "to/Mix.wav/Song/Mix.wav" : "to/Mix.wav"), content)
                    << trace;
                EXPECT_THAT(namesIn("to"), ElementsAre("Mix.wav")) << trace;
            }
    EXPECT_EQ(files.read("linked"), "linked");
}

TEST_F(ReplaceTest, KeepsTheOldWhenAnythingFails)
{
    const struct {
        const char* what;
        std::function<void(SystemCalls&)> refusals;
    } rows[] = {
        { "the copy itself", [](SystemCalls& calls) { refuse(calls.copyFileRange, ENOSPC); } },
        { "every rename", [](SystemCalls& calls) { refuse(calls.renameat2, EACCES); } },
        { "the rename that follows moving the old aside",
            [](SystemCalls& calls) {
                refuseRename(calls, RENAME_EXCHANGE, EINVAL);
                refuseRename(calls, RENAME_NOREPLACE, EIO);
            } },
    };
    for (const auto& row : rows) {
        makeOld("folder");
        CopyOptions refusing = options;
        refuse(refusing.calls.clone, EOPNOTSUPP);
        row.refusals(refusing.calls);
        EXPECT_FALSE(copyItem(source, target, refusing)) << row.what;
        EXPECT_FALSE(copyItem(album, target, refusing)) << row.what;
        EXPECT_EQ(files.read("to/Mix.wav/Old/a.wav"), "old") << row.what;
        EXPECT_THAT(namesIn("to"), ElementsAre("Mix.wav")) << row.what;
    }
}

TEST_F(ReplaceTest, CopiesAFolderAsItIs)
{
    ASSERT_TRUE(copyItem(album, files.path("to/Album")));
    EXPECT_THAT(namesIn("to/Album"), ElementsAre("Song", "link", "pipe"));
    EXPECT_EQ(std::filesystem::read_symlink(files.path("to/Album/link")), "Song/Mix.wav");
    EXPECT_TRUE(std::filesystem::is_fifo(files.path("to/Album/pipe")));
    EXPECT_EQ(files.read("to/Album/Song/Mix.wav"), content);
    const auto inner = std::filesystem::status(files.path("to/Album/Song"));
    EXPECT_EQ(inner.permissions(), std::filesystem::perms { 0555 });
    for (const char* name : { "", "/Song", "/Song/Mix.wav" })
        EXPECT_EQ(std::filesystem::last_write_time(album + name),
            std::filesystem::last_write_time(files.path("to/Album") + name))
            << name;
    beforeContent(options.calls,
        [this, n = 0]() mutable { files.write("album/" + std::to_string(++n), "new"); });
    EXPECT_FALSE(copyItem(album, files.path("to/Never"), options)) << "its entries keep changing";
    EXPECT_THAT(namesIn("to"), ElementsAre("Album"));
}

TEST_F(ReplaceTest, ShowsWatchersARenameAlone)
{
    const FileDescriptor watch(::inotify_init1(IN_NONBLOCK | IN_CLOEXEC));
    ASSERT_GE(::inotify_add_watch(watch.get(), files.path("to").c_str(),
                  IN_CREATE | IN_MODIFY | IN_MOVE | IN_CLOSE_WRITE | IN_DELETE),
        0);
    ASSERT_TRUE(copyItem(source, target));
    ASSERT_TRUE(copy()) << "over a file";
    makeOld("folder");
    ASSERT_TRUE(copy()) << "over a folder";
    std::vector<char> buffer(65536);
    const ssize_t length = ::read(watch.get(), buffer.data(), buffer.size());
    std::multiset<std::uint32_t> seen;
    for (ssize_t at = 0; at < length;) {
        inotify_event event {};
        std::memcpy(&event, &buffer[static_cast<std::size_t>(at)], sizeof event);
        const char* name = &buffer[static_cast<std::size_t>(at) + sizeof event];
        if (std::string(name) == "Mix.wav" && (event.mask & IN_ISDIR) == 0)
            seen.insert(event.mask);
        at += static_cast<ssize_t>(sizeof event + event.len);
    }
    EXPECT_EQ(seen.count(IN_MOVED_TO), 3U);
    EXPECT_EQ(seen.count(IN_CLOSE_WRITE), 3U);
    EXPECT_EQ(seen.count(IN_CREATE) + seen.count(IN_MODIFY), 0U);
}

TEST_F(ReplaceTest, RemovesOnlyLeftoversThatNobodyUses)
{
    const std::string used = files.write("to/.~Used.wav.aaaaaa.tmp", "half");
    const FileDescriptor user(::open(used.c_str(), O_RDWR | O_CLOEXEC));
    markInUse(user.get());
    files.write("to/.~Gone.wav.bbbbbb.tmp", "half");
    files.write("to/.~Gone.cccccc.tmp/inner/a.wav", "half");
    files.write("to/.~Not ours.tmp", "theirs");
    std::filesystem::create_symlink("x", files.path("to/.~Link.wav.dddddd.tmp"));
    ASSERT_TRUE(copy());
    EXPECT_THAT(namesIn("to"), Contains(".~Gone.wav.bbbbbb.tmp")) << "younger than a day";
    options.leftoverAge = std::chrono::seconds(0);
    ASSERT_TRUE(copy());
    EXPECT_THAT(namesIn("to"),
        ElementsAre(".~Link.wav.dddddd.tmp", ".~Not ours.tmp", ".~Used.wav.aaaaaa.tmp", "Mix.wav"));
}

TEST_F(ReplaceTest, SparesTheWorkOfACopyThatRuns)
{
    refuseUnnamed(options.calls);
    options.leftoverAge = std::chrono::seconds(0);
    CopyOptions other = options;
    beforeContent(options.calls, [&] {
        std::thread([&] { EXPECT_TRUE(copyItem(album, files.path("to/Other"), other)); }).join();
    });
    ASSERT_TRUE(copy());
    EXPECT_EQ(files.read("to/Mix.wav"), content);
}

TEST_F(ReplaceTest, ClosesEveryDescriptor)
{
    const auto openCount = [] {
        return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
    };
    const auto before = openCount();
    for (int i = 0; i < 10; ++i) {
        EXPECT_TRUE(copy());
        EXPECT_TRUE(copyItem(album, files.path("to/Album"), options));
        EXPECT_FALSE(copyItem(source, target));
        EXPECT_FALSE(copyItem(files.path("none"), target));
        EXPECT_FALSE(copyItem(album, album + "/Song/b", options));
    }
    EXPECT_EQ(openCount(), before);
}

} // namespace
} // namespace stemvault
