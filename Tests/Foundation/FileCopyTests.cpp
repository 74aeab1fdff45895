#include "Foundation/CopyFixture.h"
#include "Foundation/FileManager.h"

#include <csignal>
#include <sys/stat.h>
#include <sys/wait.h>
#include <sys/xattr.h>
#include <thread>

namespace stemvault {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

TEST_F(CopyTest, CopiesEverythingByWhateverMeansThereAre)
{
    const struct {
        const char* what;
        std::function<void(SystemCalls&)> refusals;
    } rows[] = {
        { "as this disk likes", [](SystemCalls&) {} },
        { "no shared blocks, no reservation",
            [](SystemCalls& calls) {
                refuse(calls.clone, EXDEV);
                refuse(calls.fallocate, EOPNOTSUPP);
            } },
        { "another file system", [](SystemCalls& calls) { refuse(calls.copyFileRange, EXDEV); } },
        { "reading and writing alone",
            [](SystemCalls& calls) {
                calls.copyFileRange = [](auto...) { return 0; };
                refuse(calls.sendfile, EINVAL);
            } },
        { "no unnamed files", refuseUnnamed },
        { "no links", [](SystemCalls& calls) { refuse(calls.linkat, EPERM); } },
        { "no rename that spares, but links",
            [](SystemCalls& calls) { refuseRename(calls, RENAME_NOREPLACE, EINVAL); } },
        { "neither",
            [](SystemCalls& calls) {
                refuseRename(calls, RENAME_NOREPLACE, ENOSYS);
                refuse(calls.linkat, EPERM);
            } },
    };
    const timespec times[] = { { 5, 0 }, { 1'700'000'000, 123'456'789 } };
    ASSERT_EQ(::chmod(source.c_str(), 04640), 0);
    ASSERT_EQ(::utimensat(AT_FDCWD, source.c_str(), times, 0), 0);
    ASSERT_EQ(::setxattr(source.c_str(), "user.note", "loud", 4, 0), 0);
    for (const auto& row : rows) {
        CopyOptions refusing;
        row.refusals(refusing.calls);
        std::filesystem::remove(target);
        const auto copied = copyItem(source, target, refusing);
        ASSERT_TRUE(copied) << row.what << ": " << copied.error();
        EXPECT_EQ(files.read("to/Mix.wav"), content) << row.what;
        struct stat status { };
        ASSERT_EQ(::stat(target.c_str(), &status), 0);
        EXPECT_EQ(status.st_mode & 07777U, 0640U) << row.what;
        EXPECT_EQ(status.st_mtim.tv_sec, times[1].tv_sec) << row.what;
        EXPECT_EQ(status.st_mtim.tv_nsec, times[1].tv_nsec) << row.what;
        char note[8] = {};
        EXPECT_EQ(::getxattr(target.c_str(), "user.note", note, sizeof note), 4) << row.what;
        EXPECT_THAT(namesIn("to"), ElementsAre("Mix.wav")) << row.what;
        EXPECT_FALSE(copyItem(source, target, refusing)) << row.what << ": it is taken now";
    }
}

TEST_F(CopyTest, TellsWhyItFailedAndLeavesNothing)
{
    const std::string mix = "“Mix.wav” couldn’t be copied because ";
    const std::string album = files.makeFolder("album");
    const std::string file = files.write("file", "");
    ASSERT_EQ(::mkfifo(files.path("pipe").c_str(), 0600), 0);
    std::filesystem::create_symlink(source, files.path("link"));
    files.write("album/Mix.wav", "taken");
    const struct {
        const char* what;
        std::string from, to;
        std::function<void(SystemCalls&)> refusals;
        std::string text;
    } rows[] = {
        { "no room", source, target, [](SystemCalls& calls) { refuse(calls.fallocate, ENOSPC); },
            mix + "the disk is full." },
        { "the room runs out", source, target,
            [](SystemCalls& calls) { refuse(calls.copyFileRange, ENOSPC); },
            mix + "the disk is full." },
        { "the room runs out while writing", source, target,
            [](SystemCalls& calls) {
                refuse(calls.copyFileRange, EXDEV);
                refuse(calls.sendfile, EINVAL);
                refuse(calls.pwrite, EDQUOT);
            },
            mix + "your share of the disk is used up." },
        { "it never reaches the disk", source, target,
            [](SystemCalls& calls) { refuse(calls.fsync, EIO); },
            mix + "the disk of the folder “to” reported an error." },
        { "a read-only disk", source, target,
            [](SystemCalls& calls) { refuse(calls.openat, EROFS); },
            mix + "the disk is read-only." },
        { "a read-only folder", source, target,
            [](SystemCalls& calls) { refuse(calls.openat, EACCES); },
            mix + "you don’t have permission to change the folder “to”." },
        { "taken", source, album + "/Mix.wav", {},
            mix + "an item with the same name already exists in “album”." },
        { "no such folder", source, album + "/none/Mix.wav", {},
            mix + "the folder “none” doesn’t exist." },
        { "a file for a folder", source, file + "/Mix.wav", {}, mix + "“file” isn’t a folder." },
        { "a long name", source, album + "/" + std::string(256, 'a'), {},
            mix + "its name is too long." },
        { "onto itself", source, source, {}, mix + "it would be copied onto itself." },
        { "through a link", files.path("link"), source, {},
            "“link” couldn’t be copied because it would be copied onto itself." },
        { "no source", files.path("B\xFF\n.wav"), target, {},
            "“B\uFFFD\uFFFD.wav” couldn’t be copied because it doesn’t exist any more." },
        { "a pipe", files.path("pipe"), target, {},
            "“pipe” couldn’t be copied because it is neither a file nor a folder." },
        { "into itself", album, album + "/b", {},
            "“album” couldn’t be copied because the folder “album” is inside it." },
    };
    for (const auto& row : rows) {
        CopyOptions refusing;
        if (row.refusals)
            row.refusals(refusing.calls);
        const auto copied = copyItem(row.from, row.to, refusing);
        ASSERT_FALSE(copied) << row.what;
        EXPECT_EQ(copied.error(), row.text);
        EXPECT_THAT(namesIn("to"), IsEmpty()) << row.what;
        EXPECT_THAT(namesIn("album"), ElementsAre("Mix.wav")) << row.what;
        EXPECT_EQ(files.read("album/Mix.wav"), "taken") << row.what;
    }
    const auto over = FileManager::replaceItem(FileURL(album + "/Mix.wav"), FileURL(album));
    ASSERT_FALSE(over);
    EXPECT_EQ(over.error(), mix + "it is inside the folder that it would replace.");
}

TEST_F(CopyTest, CopiesASourceThatChangesAgain)
{
    int attempts = 0;
    const auto append = [&] { files.write("from/Mix.wav", content += "!"); };
    const struct {
        const char* what;
        std::function<void()> change;
        int attempts;
        bool succeeds;
    } rows[] = {
        { "it never rests", append, 3, false },
        { "it grows once", [&] { attempts == 1 ? append() : void(); }, 2, true },
        { "it shrinks twice",
            [&] {
                if (attempts < 3)
                    files.write("from/Mix.wav", content.erase(0, 1 << 20));
            },
            3, true },
        { "another takes its name",
            [&] {
                if (attempts == 1)
                    std::filesystem::rename(files.write("other", content = "other"), source);
            },
            2, true },
        { "it is deleted: what was open is whole", [&] { std::filesystem::remove(source); }, 1,
            true },
    };
    for (const auto& row : rows) {
        attempts = 0;
        beforeContent(options.calls, [&] {
            ++attempts;
            row.change();
        });
        const auto copied = copy();
        EXPECT_EQ(copied.has_value(), row.succeeds) << row.what;
        EXPECT_EQ(attempts, row.attempts) << row.what;
        if (copied)
            EXPECT_EQ(files.read("to/Mix.wav"), content) << row.what;
        else
            EXPECT_NE(copied.error().find("kept changing"), std::string::npos);
        std::filesystem::remove(target);
        EXPECT_THAT(namesIn("to"), IsEmpty()) << row.what;
    }
}

TEST_F(CopyTest, SparesATargetThatAppearsMeanwhile)
{
    beforeContent(options.calls, [this] { files.write("to/Mix.wav", "theirs"); });
    EXPECT_FALSE(copy());
    EXPECT_EQ(files.read("to/Mix.wav"), "theirs");
    EXPECT_THAT(namesIn("to"), ElementsAre("Mix.wav"));
}

TEST_F(CopyTest, LetsExactlyOneOfTwoCopiesWin)
{
    for (int round = 0; round < 10; ++round) {
        std::vector<std::string> errors(2);
        std::vector<std::thread> threads;
        for (std::string& error : errors)
            threads.emplace_back([&error, this] {
                const auto copied = copy();
                error = copied ? "" : copied.error();
            });
        for (std::thread& thread : threads)
            thread.join();
        std::ranges::sort(errors);
        EXPECT_EQ(errors[0], "");
        EXPECT_NE(errors[1].find("already exists"), std::string::npos);
        EXPECT_THAT(namesIn("to"), ElementsAre("Mix.wav"));
        std::filesystem::remove(target);
    }
}

// Kills the process at a chosen one of its system calls.
class Killer {
public:
    explicit Killer(int atCall) : left(atCall) { }

    template <typename Call> void arm(Call& call)
    {
        call = [this, real = call](auto... arguments) {
            if (--left == 0)
                ::raise(SIGKILL);
            return real(arguments...);
        };
    }

    void armAll(SystemCalls& calls)
    {
        arm(calls.openat);
        arm(calls.clone);
        arm(calls.fallocate);
        arm(calls.copyFileRange);
        arm(calls.fsync);
        arm(calls.linkat);
        arm(calls.renameat2);
    }

private:
    int left;
};

bool isKilledAt(int call, const std::string& from, const std::string& to, CopyOptions options)
{
    const pid_t child = ::fork();
    if (child == 0) {
        Killer killer(call);
        killer.armAll(options.calls);
        ::_exit(copyItem(from, to, options) ? 0 : 1);
    }
    int status = 0;
    ::waitpid(child, &status, 0);
    return WIFSIGNALED(status);
}

TEST_F(CopyTest, LeavesTheOldOrTheNewWholeWhenKilled)
{
    // Some 25 pieces of data with holes between them, so as many steps of copying.
    const FileDescriptor file(::open(source.c_str(), O_WRONLY | O_TRUNC | O_CLOEXEC));
    for (off_t at = 0; at < 25 << 16; at += 1 << 16)
        ASSERT_EQ(::pwrite(file.get(), "piece", 5, at), 5);
    content = files.read("from/Mix.wav");
    options.durability = Durability::InMemory;
    options.ifTaken = IfTaken::Replace;
    for (const bool isNamed : { false, true }) {
        if (isNamed)
            refuseUnnamed(options.calls);
        int call = 1;
        for (files.write("to/Mix.wav", "old"); isKilledAt(call, source, target, options); ++call) {
            ASSERT_EQ(files.read("to/Mix.wav"), "old") << call;
            EXPECT_LE(namesIn("to").size(), 2U) << call;
        }
        EXPECT_GT(call, 20);
        EXPECT_EQ(files.read("to/Mix.wav"), content);
        options.leftoverAge = std::chrono::seconds(0);
        ASSERT_TRUE(copy());
        EXPECT_THAT(namesIn("to"), ElementsAre("Mix.wav")) << "leftovers go with the next copy";
    }
}

TEST_F(CopyTest, KeepsHolesBeyondFourGiB)
{
    const off_t size = off_t { 5 } << 30;
    ASSERT_EQ(::truncate(source.c_str(), size), 0);
    const FileDescriptor in(::open(source.c_str(), O_WRONLY | O_CLOEXEC));
    ASSERT_EQ(::pwrite(in.get(), "tail", 4, size - 8192), 4);
    refuse(options.calls.clone, EOPNOTSUPP);
    ASSERT_TRUE(copy());
    struct stat status { };
    ASSERT_EQ(::stat(target.c_str(), &status), 0);
    EXPECT_EQ(status.st_size, size);
    EXPECT_LT(status.st_blocks, 16 << 11);
    const FileDescriptor out(::open(target.c_str(), O_RDONLY | O_CLOEXEC));
    std::string bytes(4, ' ');
    ASSERT_EQ(::pread(out.get(), bytes.data(), 4, size - 8192), 4);
    EXPECT_EQ(bytes, "tail");
    ASSERT_EQ(::pread(out.get(), bytes.data(), 4, (3 << 20) - 1), 4);
    EXPECT_EQ(bytes, "mend");
}

std::string makeFolderBeyond4096Bytes(std::string path)
{
    const std::string part(200, 'd');
    FileDescriptor folder(::open(path.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
    for (; path.size() < 4500; path += "/" + part) {
        EXPECT_EQ(::mkdirat(folder.get(), part.c_str(), 0700), 0);
        folder = FileDescriptor(::openat(folder.get(), part.c_str(), O_PATH | O_CLOEXEC));
    }
    return path;
}

TEST_F(CopyTest, TakesEveryNameAndPath)
{
    const std::string deep = makeFolderBeyond4096Bytes(files.path());
    const std::string names[] = { std::string(255, 'a'), std::string(251, '\xBF') + ".wav",
        "not \xFF UTF-8.wav", "new\nline.wav", " blank ", ".~", deep + "/Mix.wav" };
    for (const std::string& name : names) {
        const std::string to = name.starts_with('/') ? name : files.path("to/" + name);
        ASSERT_TRUE(copyItem(source, to)) << name;
        EXPECT_TRUE(FileManager::fileExists(to)) << name;
        EXPECT_EQ(FileManager::fileSize(to), content.size()) << name;
        EXPECT_EQ(
            FileManager::contentModificationDate(to), FileManager::contentModificationDate(source))
            << name;
        ASSERT_TRUE(FileManager::replaceItem(FileURL(to), FileURL(target))) << name;
        EXPECT_EQ(files.read("to/Mix.wav"), content) << name;
    }
    std::filesystem::create_symlink("nowhere", files.path("dangling"));
    EXPECT_TRUE(FileManager::fileExists(files.path("dangling")));
    EXPECT_EQ(FileManager::fileSize(files.path("dangling")), 7);
    EXPECT_FALSE(FileManager::fileExists(files.path("none")));
    EXPECT_FALSE(FileManager::fileSize(files.path("none")));
    EXPECT_FALSE(FileManager::contentModificationDate(files.path("none")));
}

} // namespace
} // namespace stemvault
