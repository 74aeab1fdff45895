#include "FileManager/CopyFault.h"
#include "FileManager/CopyFixture.h"
#include "FileManager/FileManager.h"
#include "FileManager/KilledAt.h"
#include "FileManager/TemporaryItem.h"

#include <atomic>
#include <filesystem>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <thread>
#include <utility>

namespace stemvault {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using Calls = SystemCalls;

TEST_F(CopyTest, CopiesEverythingByWhateverMeansThereAre)
{
    const Refusal movesNothing = [](Calls& calls) {
        calls.copyFileRange = [](auto...) { return 0; };
    };
    const struct {
        const char* what;
        std::vector<Refusal> refusals;
    } rows[] = {
        { "as this disk likes", {} },
        { "no reservation", { no(&Calls::clone, EXDEV), no(&Calls::fallocate, EOPNOTSUPP) } },
        { "another file system", { no(&Calls::copyFileRange, EXDEV) } },
        { "reading and writing", { movesNothing, no(&Calls::sendfile, EINVAL) } },
        { "a disk whose files share content", { sharesContent } },
        { "a signal arrives", { no(&Calls::clone, EXDEV), isInterrupted } },
        { "no unnamed files", { noUnnamed } },
        { "no links", { no(&Calls::linkat, EPERM) } },
        { "no rename that spares", { noRename(RENAME_NOREPLACE, EINVAL) } },
        { "both times or none", { setsBothTimesOrNone } },
        { "neither", { noRename(RENAME_NOREPLACE, ENOSYS), no(&Calls::linkat, EPERM) } },
    };
    const timespec times[] = { { 5, 0 }, { 1'700'000'000, 123'456'789 } };
    ASSERT_EQ(::chmod(source.c_str(), 04700), 0);
    ASSERT_EQ(::utimensat(AT_FDCWD, source.c_str(), times, 0), 0);
    ASSERT_EQ(::setxattr(source.c_str(), "user.note", "loud", 4, 0), 0);
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        std::filesystem::remove(target);
        const auto copied = copyItem(source, target, with(row.refusals));
        ASSERT_TRUE(copied) << copied.error();
        EXPECT_EQ(files.read("to/Mix.wav"), content);
        struct stat status { };
        ASSERT_EQ(::stat(target.c_str(), &status), 0);
        EXPECT_EQ(status.st_mode & 07777U, 0700U);
        EXPECT_EQ(status.st_mtim.tv_sec, times[1].tv_sec);
        EXPECT_EQ(status.st_mtim.tv_nsec, times[1].tv_nsec);
        EXPECT_EQ(::getxattr(target.c_str(), "user.note", nullptr, 0), 4);
        EXPECT_THAT(names(), ElementsAre("Mix.wav"));
        EXPECT_FALSE(copyItem(source, target, with(row.refusals))) << "it is taken now";
    }
}

TEST_F(CopyTest, TellsWhyItFailedAndLeavesNothing)
{
    const std::string album = files.makeFolder("album");
    const std::string taken = files.write("album/Mix.wav", "taken");
    const std::string file = files.write("file", "");
    const std::string pipe = files.path("pipe");
    const std::string link = files.path("link");
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    std::filesystem::create_symlink(source, link);
    files.makeFolder("tree/inner");
    const std::string treeWithLink = files.makeFolder("linked");
    std::filesystem::create_symlink("a", treeWithLink + "/link");
    const auto noInner = [](Calls& calls) {
        calls.mkdirat = [](int folder, const std::string& name, mode_t mode) {
            return name == "inner" ? (errno = ENOSPC, -1) : ::mkdirat(folder, name.c_str(), mode);
        };
    };
    const struct {
        std::string from, to;
        std::vector<Refusal> refusals;
        std::string name, reason;
    } rows[] = {
        { source, target, { no(&Calls::fallocate, ENOSPC) }, "Mix.wav", "the disk is full" },
        { source, target, { no(&Calls::copyFileRange, ENOSPC) }, "Mix.wav", "the disk is full" },
        { source, target,
            { no(&Calls::copyFileRange, EXDEV), no(&Calls::sendfile, EINVAL),
                no(&Calls::pwrite, ESPIPE) },
            "Mix.wav", "the disk of the folder “to” reported an error" },
        { source, target, { no(&Calls::openat, EINVAL) }, "Mix.wav",
            "the disk of the folder “to” doesn’t allow its name" },
        { source, target, { noUnnamed, no(&Calls::renameat2, EILSEQ) }, "Mix.wav",
            "the disk of the folder “to” doesn’t allow its name" },
        { source, target, { no(&Calls::copyFileRange, ENOTCONN) }, "Mix.wav",
            "the drive of the folder “to” was disconnected" },
        { source, target, { failsAtClose(EDQUOT) }, "Mix.wav",
            "your share of the disk is used up" },
        { source, target, { noUnnamed, failsAtClose(ENOSPC) }, "Mix.wav", "the disk is full" },
        { source, target, { no(&Calls::openat, EROFS) }, "Mix.wav", "the disk is read-only" },
        { source, target, { no(&Calls::openat, EACCES) }, "Mix.wav",
            "you don’t have permission to change the folder “to”" },
        { source, target, { noUnnamed, no(&Calls::linkat, EPERM), no(&Calls::renameat2, ENOSYS) },
            "Mix.wav", "it couldn’t be written (Function not implemented)" },
        { source, target, { readsAs("/proc/self/mem"), no(&Calls::copyFileRange, EIO) }, "Mix.wav",
            "its disk reported an error" },
        { source, target, { readsAs("/proc"), no(&Calls::copyFileRange, EXDEV) }, "Mix.wav",
            "it couldn’t be read (Is a directory)" },
        { files.path("from"), target, { no(&Calls::openat, ENOSPC) }, "from", "the disk is full" },
        { files.path("tree"), target, { noInner }, "tree", "the disk is full" },
        { treeWithLink, target, { no(&Calls::symlinkat, EPERM) }, "linked",
            "you don’t have permission to change the folder “to”" },
        { source, taken, {}, "Mix.wav", "an item with the same name already exists in “album”" },
        { source, album + "/none/a", {}, "Mix.wav", "the folder “none” doesn’t exist" },
        { source, file + "/a", {}, "Mix.wav", "“file” isn’t a folder" },
        { source, album + "/" + std::string(256, 'a'), {}, "Mix.wav", "its name is too long" },
        { source, source, {}, "Mix.wav", "it would be copied onto itself" },
        { link, source, {}, "link", "it would be copied onto itself" },
        { files.path("B\xFF\n"), target, {}, "B\uFFFD\uFFFD", "it doesn’t exist any more" },
        { pipe, target, {}, "pipe", "it is neither a file nor a folder" },
        { album, album + "/b", {}, "album", "the folder “album” is inside it" },
    };
    for (const auto& row : rows) {
        const std::string text =
            "“" + row.name + "” couldn’t be copied because " + row.reason + ".";
        const auto copied = copyItem(row.from, row.to, with(row.refusals));
        ASSERT_FALSE(copied) << text;
        EXPECT_EQ(copied.error(), text);
        EXPECT_FALSE(copied.isTransient()) << text;
        EXPECT_THAT(names(), IsEmpty()) << text;
        EXPECT_THAT(names("album"), ElementsAre("Mix.wav")) << text;
        EXPECT_EQ(files.read("album/Mix.wav"), "taken") << text;
    }
    for (const std::string& inside : { taken, files.makeFolder("album/inner") }) {
        const auto over = FileManager::replaceItem(FileURL(inside), FileURL(album));
        ASSERT_FALSE(over);
        EXPECT_THAT(over.error(), HasSubstr("it is inside the folder that it would replace."));
    }
    for (const int error : { ENOTCONN, ENODEV })
        EXPECT_THAT(describe({ CopyFault::Kind::Reading, error }, source, target),
            HasSubstr("because its drive was disconnected."));
}

TEST_F(CopyTest, GoesAsFarAsTheUserMay)
{
    const std::string from = files.path("from"), to = files.path("to");
    const std::string unreadable = "you don’t have permission to read it.";
    const struct {
        const char* what;
        std::string item, closed;
        mode_t mode;
        std::string reason;
    } rows[] = {
        { "a file that nobody may read", source, source, 0, unreadable },
        { "a folder with such a file", from, source, 0, unreadable },
        { "a folder with a closed one", from, files.makeFolder("from/inner"), 0, unreadable },
        { "a folder whose names alone may be seen", from, from, 0444, unreadable },
        { "a folder with devices", "/dev/pts", from, 0755,
            "you don’t have permission to change the folder “to”." },
        { "a folder, to where nothing may be added", from, to, 0555,
            "you don’t have permission to change the folder “to”." },
        { "a file, to where names may not be seen", source, to, 0333, "" },
        { "a file that nobody may write", source, source, 0444, "" },
    };
    for (const auto& row : rows) {
        ASSERT_EQ(::chmod(files.path().c_str(), 0755), 0);
        ASSERT_EQ(::chmod(from.c_str(), 0755), 0);
        ASSERT_EQ(::chmod(files.path("from/inner").c_str(), 0755), 0);
        ASSERT_EQ(::chmod(source.c_str(), 0644), 0);
        ASSERT_EQ(::chmod(to.c_str(), 0777), 0);
        ASSERT_EQ(::chmod(row.closed.c_str(), row.mode), 0);
        SCOPED_TRACE(row.what);
        asOrdinaryUser([&] {
            const auto copied = copyItem(row.item, target);
            EXPECT_THAT(copied ? "" : copied.error(), testing::EndsWith(row.reason));
            EXPECT_EQ(copied.has_value(), row.reason.empty());
        });
        ASSERT_EQ(::chmod(to.c_str(), 0777), 0);
        EXPECT_EQ(FileManager::fileExists(target), row.reason.empty());
        EXPECT_LT(::getxattr(target.c_str(), stagedMark, nullptr, 0), 0);
        std::filesystem::remove(target);
        EXPECT_THAT(names(), IsEmpty());
    }
}

TEST_F(CopyTest, FollowsALinkOnlyWhereTheUserNamedIt)
{
    const std::string folder = files.path("from");
    const std::string secret = files.write("private/Mix.wav", "secret");
    const auto putLink = [&](const std::string& to) {
        std::filesystem::remove_all(source);
        std::filesystem::create_symlink(to, source);
    };
    const auto renameNewOver = [&] {
        std::filesystem::rename(files.write("from/new", "newer"), source);
    };
    const auto makeFolderAnew = [&] {
        std::filesystem::rename(folder, files.path("old"));
        files.write("from/Mix.wav", "newer");
    };
    const auto putLinkForFolder = [&] {
        std::filesystem::remove_all(folder);
        std::filesystem::create_directory_symlink("private", folder);
    };
    const auto putPipe = [&] {
        std::filesystem::remove(source);
        EXPECT_EQ(::mkfifo(source.c_str(), 0600), 0);
    };
    const std::string link = "it is a link; select it yourself to copy what it leads to.";
    const struct {
        const char* what;
        bool isNamed;
        std::function<void()> change; ///< Made after the source was named or found.
        std::string copied, reason;
    } rows[] = {
        { "a named link", true, [&] { putLink(secret); }, "secret", "" },
        { "a link to a file", false, [&] { putLink(secret); }, "", link },
        { "a link within the folder", false, [&] { putLink("Other.wav"); }, "", link },
        { "a link to a folder", false, [&] { putLink("../private"); }, "", link },
        { "written anew under its name", false, renameNewOver, "newer", "" },
        { "the folder is made anew", false, makeFolderAnew, "newer", "" },
        { "the folder is gone", false, [&] { std::filesystem::remove_all(folder); }, "",
            "it doesn’t exist any more." },
        { "the folder becomes a link", false, putLinkForFolder, "",
            "its folder has been replaced by another one." },
        { "a pipe", false, putPipe, "", "it is neither a file nor a folder." },
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        std::filesystem::remove_all(folder);
        files.write("from/Mix.wav", "original");
        files.write("from/Other.wav", "other");
        if (!row.isNamed)
            options.foundIn = FileManager::identityOfFolder(folder);
        row.change();
        const auto copied = copyItem(source, target, options);
        EXPECT_EQ(copied ? "" : copied.error(),
            row.reason.empty() ? "" : "“Mix.wav” couldn’t be copied because " + row.reason);
        EXPECT_EQ(files.read("to/Mix.wav"), row.copied);
        std::filesystem::remove(target);
        options.foundIn.reset();
    }
}

// This hangs if a copy opens a pipe and waits for its writer.
TEST_F(CopyTest, WaitsForNoPipeThatTakesTheFilesPlace)
{
    const std::string pipe = files.path("from/pipe");
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    files.write("from/Mix.wav", "small");
    options.durability = Durability::InMemory;
    options.ifExists = IfExists::Replace;
    std::atomic<bool> isDone = false;
    std::thread exchanging([&] {
        while (!isDone)
            ::renameat2(AT_FDCWD, source.c_str(), AT_FDCWD, pipe.c_str(), RENAME_EXCHANGE);
    });
    for (int i = 0; i < 150; ++i) {
        static_cast<void>(copyItem(source, target, options));
        static_cast<void>(copyItem(files.path("from"), files.path("to/Folder"), options));
    }
    isDone = true;
    exchanging.join();
}

TEST_F(CopyTest, CopiesASourceThatChangesAgain)
{
    int attempt = 0;
    const FolderWatch opened(files.path("from"), IN_OPEN);
    const auto write = [&](const std::string& fresh) {
        files.write("from/Mix.wav", content = fresh);
    };
    const struct {
        const char* what;
        std::function<void()> change;
        int attempts;
        bool succeeds;
    } rows[] = {
        { "it never rests", [&] { write(content + "!"); }, 3, false },
        { "it grows once", [&] { attempt == 1 ? write(content + "!") : void(); }, 2, true },
        { "it shrinks twice", [&] { attempt < 3 ? write(content.substr(9)) : void(); }, 3, true },
        { "another takes its name",
            [&] {
                if (attempt == 1)
                    std::filesystem::rename(files.write("other", content = "other"), source);
            },
            2, true },
        { "its date changes whenever it is opened",
            [&] {
                if (!opened.events("Mix.wav").empty())
                    ::utimensat(AT_FDCWD, source.c_str(), nullptr, 0);
            },
            2, true },
        { "it is deleted, and was open", [&] { std::filesystem::remove(source); }, 1, true },
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        attempt = 0;
        const auto copied =
            copyItem(source, target, with({ meanwhile([&] { ++attempt, row.change(); }) }));
        EXPECT_EQ(attempt, row.attempts);
        ASSERT_EQ(copied.has_value(), row.succeeds);
        if (copied)
            EXPECT_EQ(files.read("to/Mix.wav"), content);
        else
            EXPECT_THAT(copied.error(), HasSubstr("it kept changing"));
        EXPECT_EQ(copied.isTransient(), !row.succeeds);
        std::filesystem::remove(target);
        EXPECT_THAT(names(), IsEmpty());
    }
}

TEST_F(CopyTest, GivesNoMorePermissionsThanTheSourceAndTheUmaskAllow)
{
    // What setfacl writes for user::rw-, user:1234:rwx, group::r--, mask::rwx, other::---
    constexpr unsigned char list[] = { 2, 0, 0, 0, // Version.
        1, 0, 6, 0, 255, 255, 255, 255, 2, 0, 7, 0, 210, 4, 0, 0, 4, 0, 4, 0, 255, 255, 255, 255,
        16, 0, 7, 0, 255, 255, 255, 255, 32, 0, 0, 0, 255, 255, 255, 255 };
    const struct {
        const char* what;
        mode_t mode, umask, copied;
        bool hasList;
    } rows[] = {
        { "an ordinary file", 0644, 0022, 0644, false },
        { "anyone may write the source", 0666, 0077, 0600, false },
        { "a group shares its files", 0664, 0002, 0664, false },
        { "a private file", 0600, 0000, 0600, false },
        { "nobody may write the source", 0444, 0022, 0444, false },
        { "its list gives the group less than the mode shows", 0670, 0002, 0640, true },
    };
    for (const auto& row : rows) {
        std::filesystem::remove(source);
        files.write("from/Mix.wav", content);
        ASSERT_EQ(::chmod(source.c_str(), row.mode), 0);
        if (row.hasList) {
            const int set =
                ::setxattr(source.c_str(), "system.posix_acl_access", list, sizeof list, 0);
            ASSERT_EQ(set, 0) << std::strerror(errno);
        }
        const mode_t before = ::umask(row.umask);
        EXPECT_TRUE(copyItem(source, target)) << row.what;
        ::umask(before);
        struct stat status { };
        ASSERT_EQ(::stat(target.c_str(), &status), 0);
        EXPECT_EQ(status.st_mode & 07777U, row.copied) << row.what;
        EXPECT_LT(::getxattr(target.c_str(), stagedMark, nullptr, 0), 0) << row.what;
        std::filesystem::remove(target);
    }
}

TEST_F(CopyTest, KeepsTheGroupThatAFolderHandsDown)
{
    ASSERT_EQ(::chmod(files.path("to").c_str(), 02775), 0);
    ASSERT_TRUE(copyItem(files.path("from"), files.path("to/Album")));
    struct stat status { };
    ASSERT_EQ(::stat(files.path("to/Album").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & S_ISGID, S_ISGID);
}

TEST_F(CopyTest, IsMadeAgainWhenSomebodyRemovesTheDraft)
{
    for (const auto& refusals : { std::vector<Refusal> {}, { noUnnamed } }) {
        for (const int mostRemovals : { 1, 3 }) {
            int removals = 0;
            const Refusal removed = [&](Calls& calls) {
                calls.renameat2 = [&, real = calls.renameat2](int folder, const char* from,
                                      int toFolder, const char* to, unsigned flags) {
                    if (removals < mostRemovals && ++removals > 0)
                        ::unlinkat(folder, from, 0);
                    return real(folder, from, toFolder, to, flags);
                };
            };
            auto all = refusals;
            all.push_back(removed);
            const auto copied = copyItem(source, target, with(all));
            EXPECT_EQ(removals, mostRemovals);
            EXPECT_EQ(copied.has_value(), mostRemovals == 1);
            EXPECT_FALSE(copied.isTransient()) << "the source is at rest";
            if (!copied)
                EXPECT_THAT(copied.error(), HasSubstr("kept removing the unfinished copy"));
            else
                EXPECT_EQ(files.read("to/Mix.wav"), content);
            std::filesystem::remove(target);
        }
    }
}

TEST_F(CopyTest, LeavesNothingInAFolderWhereNamesStay)
{
    const FileDescriptor folder(::open(files.path("to").c_str(), O_RDONLY | O_CLOEXEC));
    int flags = 0;
    ASSERT_EQ(::ioctl(folder.get(), FS_IOC_GETFLAGS, &flags), 0);
    const int appendOnly = flags | FS_APPEND_FL;
    if (::ioctl(folder.get(), FS_IOC_SETFLAGS, &appendOnly) != 0)
        GTEST_SKIP() << "only root may make a folder append-only";
    EXPECT_TRUE(copyItem(source, target));
    const auto replaced = FileManager::replaceItem(FileURL(source), FileURL(target));
    const auto named = copyItem(source, files.path("to/B.wav"), with({ noUnnamed }));
    const auto inner = copyItem(files.path("from"), files.path("to/Folder"));
    ASSERT_EQ(::ioctl(folder.get(), FS_IOC_SETFLAGS, &flags), 0);
    for (const auto& refused : { replaced, named, inner }) {
        ASSERT_FALSE(refused);
        EXPECT_THAT(refused.error(), HasSubstr("you don’t have permission"));
    }
    EXPECT_EQ(files.read("to/Mix.wav"), content);
    EXPECT_THAT(names(), ElementsAre("Mix.wav"));
}

TEST_F(CopyTest, LetsExactlyOneOfTwoWin)
{
    const Refusal appears = meanwhile([this] { files.write("to/Mix.wav", "theirs"); });
    const Refusal noSparing = noRename(RENAME_NOREPLACE, EINVAL);
    const Refusal appearsAtLast = [this](Calls& calls) {
        calls.renameat2 = [this, real = calls.renameat2](auto... given) {
            return files.write("to/Mix.wav", "theirs"), real(given...);
        };
    };
    for (const auto& refusals : { std::vector<Refusal> { appearsAtLast }, { appears, noSparing },
             { appears, noSparing, noUnnamed, no(&Calls::linkat, EPERM) } }) {
        EXPECT_FALSE(copyItem(source, target, with(refusals)));
        EXPECT_EQ(files.read("to/Mix.wav"), "theirs");
        std::filesystem::remove(target);
    }
}

TEST_F(CopyTest, LeavesTheOldOrTheNewWholeWhenKilled)
{
    // Data with holes in between, so that copying takes many system calls.
    const auto version = [](int step) {
        std::string text =
            std::to_string(step) + std::string(100'000, static_cast<char>('a' + step % 26));
        for (std::size_t at = 8192; at < text.size(); at += 16384)
            text.replace(at, 8192, 8192, 0);
        return text;
    };
    const auto write = [&](int step) {
        const std::string text = version(step);
        const FileDescriptor file(::open(source.c_str(), O_WRONLY | O_TRUNC | O_CLOEXEC));
        for (std::size_t at = 0; at < text.size(); at += 16384)
            EXPECT_GT(::pwrite(file.get(), &text[at], std::min<std::size_t>(8192, text.size() - at),
                          static_cast<off_t>(at)),
                0);
    };
    options.ifExists = IfExists::Replace;
    options.leftoverAge = std::chrono::seconds(0);
    options.durability = Durability::InMemory;
    std::size_t leftovers = 0;
    const struct {
        std::string from, file;
        std::vector<Refusal> refusals;
    } rows[] = { { "from/Mix.wav", "to/Mix.wav", {} },
        { "from/Mix.wav", "to/Mix.wav", { noUnnamed } }, { "from", "to/Mix.wav/Mix.wav", {} } };
    for (const auto& row : rows) {
        CopyOptions changed = with(row.refusals);
        const auto copy = [&](int step) {
            write(step);
            static_cast<void>(copyItem(files.path(row.from), target, changed));
        };
        const auto found = [&] {
            leftovers += names().size() - 1;
            for (const std::string& name : names())
                EXPECT_TRUE(name == "Mix.wav" || isTemporaryName(name)) << name;
            const std::string text = files.read(row.file);
            const int step = std::atoi(text.c_str());
            return text == version(step) ? step : -1;
        };
        EXPECT_GT(expectWholeWhenKilled(70, changed.calls, copy, found), 10);
        copy(1);
        EXPECT_THAT(names(), ElementsAre("Mix.wav")) << "a later copy clears up";
    }
    EXPECT_GT(leftovers, 10U);
}

TEST_F(CopyTest, KeepsHolesBeyondFourGiB)
{
    const off_t size = off_t { 5 } << 30;
    ASSERT_EQ(::truncate(source.c_str(), size), 0);
    const FileDescriptor in(::open(source.c_str(), O_WRONLY | O_CLOEXEC));
    ASSERT_EQ(::pwrite(in.get(), "tail", 4, size - 8192), 4);
    ASSERT_TRUE(copyItem(source, target, with({ no(&Calls::clone, EOPNOTSUPP) })));
    struct stat status { };
    ASSERT_EQ(::stat(target.c_str(), &status), 0);
    EXPECT_EQ(status.st_size, size);
    EXPECT_LT(status.st_blocks, 16 << 11);
    EXPECT_FALSE(copyItem(source, files.path("to/Full.wav"),
        with({ no(&Calls::clone, EOPNOTSUPP), no(&Calls::copyFileRange, ENOSPC) })));
    const FileDescriptor out(::open(target.c_str(), O_RDONLY | O_CLOEXEC));
    ASSERT_EQ(::truncate(source.c_str(), 3 << 20), 0);
    ASSERT_TRUE(copyItem(source, files.path("to/Dense.wav"),
        with({ no(&Calls::clone, EOPNOTSUPP), no(&Calls::ftruncate, EPERM) })));
    EXPECT_EQ(files.read("to/Dense.wav"), files.read("from/Mix.wav")) << "a drive without holes";
    for (const auto& [at, text] :
        { std::pair<off_t, std::string> { size - 8192, "tail" }, { (1 << 20) - 1, "mend" } }) {
        std::string bytes(4, ' ');
        ASSERT_EQ(::pread(out.get(), bytes.data(), 4, at), 4);
        EXPECT_EQ(bytes, text);
    }
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
    const std::string deep = makeFolderBeyond4096Bytes(files.path()) + "/Mix.wav";
    const std::string items[] = { std::string(255, 'a'), std::string(251, '\xBF') + ".wav",
        "not \xFF UTF-8.wav", "new\nline.wav", " blank ", ".~", deep };
    for (const std::string& item : items) {
        const std::string to = item == deep ? deep : files.path("to/" + item);
        ASSERT_TRUE(copyItem(source, to)) << item;
        EXPECT_TRUE(FileManager::fileExists(to)) << item;
        EXPECT_EQ(FileManager::attributesOfItem(to)->size, content.size()) << item;
        EXPECT_EQ(
            FileManager::contentModificationDate(to), FileManager::contentModificationDate(source));
        ASSERT_TRUE(FileManager::replaceItem(FileURL(to), FileURL(target))) << item;
        EXPECT_EQ(files.read("to/Mix.wav"), content) << item;
    }
    const std::string dangling = files.path("dangling");
    std::filesystem::create_symlink("nowhere", dangling);
    EXPECT_TRUE(FileManager::fileExists(dangling));
    EXPECT_EQ(FileManager::attributesOfItem(dangling)->size, 7);
    for (const std::string& none : { files.path("none"), std::string(5000, 'a') })
        EXPECT_FALSE(FileManager::fileExists(none));
    EXPECT_FALSE(FileManager::sourceState(
        FileURL(files.path("to")), std::nullopt, [](const auto&) { return true; }));
    EXPECT_FALSE(FileManager::attributesOfItem(files.path("none")));
    EXPECT_FALSE(FileManager::contentModificationDate(files.path("none")));
}

} // namespace
} // namespace stemvault
