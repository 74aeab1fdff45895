#include "FileManager/WriterCheck.h"
#include "Foundation/FileDescriptor.h"
#include "Support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <atomic>
#include <csignal>
#include <fcntl.h>
#include <functional>
#include <memory>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace stemvault {
namespace {

using Writer = std::shared_ptr<void>; ///< Stops writing when the last copy is destroyed.

Writer opened(const std::string& path, int flags)
{
    return std::make_shared<FileDescriptor>(::open(path.c_str(), flags | O_CLOEXEC));
}

/// Maps the file and closes its descriptor.
Writer mapped(const std::string& path, int sharing)
{
    const int access = sharing == MAP_SHARED ? O_RDWR : O_RDONLY;
    const FileDescriptor file(::open(path.c_str(), access | O_CLOEXEC));
    void* const memory = ::mmap(nullptr, 4, PROT_READ | PROT_WRITE, sharing, file.get(), 0);
    EXPECT_NE(memory, MAP_FAILED);
    return { memory, [](void* mapping) { ::munmap(mapping, 4); } };
}

/// Starts a process that opens the file, and kills it when the result is destroyed.
Writer openedElsewhere(const std::string& path)
{
    int ready[2];
    EXPECT_EQ(::pipe(ready), 0);
    const pid_t process = ::fork();
    if (process == 0) {
        const int file = ::open(path.c_str(), O_WRONLY);
        (void)!::write(ready[1], "", file >= 0 ? 1 : 0);
        ::close(ready[1]);
        for (;;)
            ::pause();
    }
    ::close(ready[1]);
    char byte = 0;
    EXPECT_EQ(::read(ready[0], &byte, 1), 1) << "the other process has the file open";
    ::close(ready[0]);
    return { nullptr, [process](void*) {
                ::kill(process, SIGKILL);
                ::waitpid(process, nullptr, 0);
            } };
}

bool isSeenAmongProcesses(const std::string& path)
{
    const FileDescriptor item(::open(path.c_str(), O_PATH | O_NOFOLLOW | O_CLOEXEC));
    return isWrittenByOwnProcess(item.get());
}

struct WriterCheckTests : testing::Test {
    TemporaryFolder folder;
    const std::string mix = folder.write("Mix.wav", "data");
};

TEST_F(WriterCheckTests, FindsWhoeverCanWrite)
{
    const struct {
        const char* what;
        std::function<Writer()> begin;
        bool isWritten;
    } rows[] = {
        { "nobody", [] { return Writer(); }, false },
        { "a reader", [&] { return opened(mix, O_RDONLY); }, false },
        { "a holder without access", [&] { return opened(mix, O_PATH); }, false },
        { "a writer of another file", [&] { return opened(folder.write("b", ""), O_WRONLY); },
            false },
        { "a writer", [&] { return opened(mix, O_WRONLY); }, true },
        { "a reader and writer", [&] { return opened(mix, O_RDWR); }, true },
        { "a writer at the end", [&] { return opened(mix, O_WRONLY | O_APPEND); }, true },
        { "a shared mapping", [&] { return mapped(mix, MAP_SHARED); }, true },
        { "a private mapping", [&] { return mapped(mix, MAP_PRIVATE); }, false },
        { "another process", [&] { return openedElsewhere(mix); }, true },
    };
    for (const auto& row : rows) {
        const Writer writer = row.begin();
        EXPECT_EQ(writersOf(mix), row.isWritten ? Writers::Some : Writers::None) << row.what;
        EXPECT_EQ(isSeenAmongProcesses(mix), row.isWritten) << row.what;
    }
}

TEST_F(WriterCheckTests, LooksAtOrdinaryFilesAlone)
{
    const std::string link = folder.path("link"), pipe = folder.path("pipe");
    std::filesystem::create_symlink(mix, link);
    ASSERT_EQ(::mkfifo(pipe.c_str(), S_IRWXU), 0);
    for (const std::string& path : { link, pipe, folder.path(), folder.path("none") })
        EXPECT_EQ(writersOf(path), Writers::Unknown) << path;
}

TEST_F(WriterCheckTests, TakesADescriptorOfAnyKind)
{
    for (const int flags : { O_PATH, O_RDONLY }) {
        const FileDescriptor file(::open(mix.c_str(), flags | O_CLOEXEC));
        EXPECT_EQ(writersOf(file.get()), Writers::None) << flags;
        const Writer writer = opened(mix, O_WRONLY);
        EXPECT_EQ(writersOf(file.get()), Writers::Some) << flags;
    }
}

TEST_F(WriterCheckTests, LooksAmongProcessesAtAFileOfAnotherUser)
{
    if (::geteuid() != 0)
        GTEST_SKIP() << "only root can be another user for a while";
    std::filesystem::permissions(folder.path(), std::filesystem::perms(0755));
    const Writer writer = opened(mix, O_WRONLY);
    const std::string other = folder.write("Other.wav", "data");
    const std::string closed = folder.write("Closed.wav", "data");
    const Writer writerOfClosed = opened(closed, O_WRONLY);
    ASSERT_EQ(::chmod(closed.c_str(), 0), 0);
    Writers ofMix {}, ofOther {}, ofClosed {};
    // The raw system call changes only this thread; the C library's function would change them all.
    std::thread([&] {
        ASSERT_EQ(::syscall(SYS_setresuid, -1, 65534, -1), 0);
        ofMix = writersOf(mix);
        ofOther = writersOf(other);
        ofClosed = writersOf(closed);
    }).join();
    EXPECT_EQ(ofMix, Writers::Some);
    EXPECT_EQ(ofOther, Writers::Unknown);
    EXPECT_EQ(ofClosed, Writers::Some) << "a file that it may not read";
}

TEST_F(WriterCheckTests, AWriterThatComesMeanwhileHarmsNobody)
{
    std::atomic<bool> isOver = false;
    std::atomic<int> failures = 0, opens = 0;
    std::thread writer([&] {
        while (!isOver) {
            const FileDescriptor file(::open(mix.c_str(), O_WRONLY | O_CLOEXEC));
            failures += file ? 0 : 1;
            ++opens;
        }
    });
    int granted = 0, refused = 0;
    // Some of these opens break the lease; its default signal, SIGIO, would kill this process.
    while (granted < 5'000 || refused < 100)
        ++(writersOf(mix) == Writers::None ? granted : refused);
    isOver = true;
    writer.join();
    EXPECT_EQ(failures, 0) << "of " << opens;
}

} // namespace
} // namespace stemvault
