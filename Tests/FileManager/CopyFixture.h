#pragma once

#include "FileManager/FileCopy.h"
#include "Foundation/FileDescriptor.h"
#include "Support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <cstdint>
#include <cstring>
#include <functional>
#include <set>
#include <string>
#include <sys/inotify.h>
#include <sys/syscall.h>
#include <thread>
#include <utility>
#include <vector>

namespace stemvault {

using Refusal = std::function<void(SystemCalls&)>;

template <typename Call> Refusal no(Call SystemCalls::*call, int error)
{
    return [=](SystemCalls& calls) { calls.*call = [=](auto...) { return errno = error, -1; }; };
}

/// Fails only the renames that have one of the flags.
inline Refusal noRename(unsigned flags, int error)
{
    return [=](SystemCalls& calls) {
        calls.renameat2 = [=, real = calls.renameat2](
                              auto from, auto old, auto to, auto name, unsigned given) {
            return (given & flags) == 0 ? real(from, old, to, name, given) : (errno = error, -1);
        };
    };
}

inline void noUnnamed(SystemCalls& calls)
{
    calls.openat = [](int folder, const char* name, int flags, mode_t mode) {
        return (flags & O_TMPFILE) == O_TMPFILE ? (errno = EOPNOTSUPP, -1)
                                                : ::openat(folder, name, flags, mode);
    };
}

/// Closes files but returns `error`, as network drives do when they cannot store the content.
inline Refusal failsAtClose(int error)
{
    return [=](SystemCalls& calls) {
        calls.close = [=](int file) { return ::close(file), errno = error, -1; };
    };
}

/// Sets both times or neither, as file systems built on libfuse 2 do.
inline void setsBothTimesOrNone(SystemCalls& calls)
{
    calls.futimens = [](int file, const timespec times[2]) {
        const bool isWhole = times[0].tv_nsec < UTIME_OMIT && times[0].tv_nsec != UTIME_NOW;
        return isWhole ? ::futimens(file, times) : 0;
    };
}

/// Lets the first copying step of each copy be interrupted by a signal.
inline void isInterrupted(SystemCalls& calls)
{
    calls.copyFileRange = [real = calls.copyFileRange, isFirst = true](auto... given) mutable {
        return std::exchange(isFirst, false) ? (errno = EINTR, -1) : real(given...);
    };
}

/// Copies the content in one call, as disks do whose files can share it.
inline void sharesContent(SystemCalls& calls)
{
    calls.clone = [](int out, int in) {
        struct stat status { };
        off_t at = 0;
        return ::fstat(in, &status) == 0 && ::sendfile(out, in, &at, 1U << 30U) == status.st_size
            ? 0
            : -1;
    };
}

/// Puts another item in place of the open source, whose reading then fails as that item's does.
inline Refusal readsAs(const char* path)
{
    return [=](SystemCalls& calls) {
        calls.clone = [=](int, int in) {
            const FileDescriptor other(::open(path, O_RDONLY | O_CLOEXEC));
            EXPECT_EQ(::dup3(other.get(), in, O_CLOEXEC), in);
            return errno = EOPNOTSUPP, -1;
        };
    };
}

/// Runs `work` on a thread that has the rights of an ordinary user, also where root runs the tests.
/// The raw system call changes only this thread; the C library's function would change them all.
inline void asOrdinaryUser(const std::function<void()>& work)
{
    std::thread([&] {
        if (::geteuid() == 0) {
            ASSERT_EQ(::syscall(SYS_setresuid, -1, 65534, -1), 0);
        }
        work();
    }).join();
}

/// Runs `work` on each attempt, before the first bytes are copied.
inline Refusal meanwhile(const std::function<void()>& work)
{
    return [=](SystemCalls& calls) {
        calls.clone = [=](int, int) { return work(), errno = EOPNOTSUPP, -1; };
    };
}

/// Watches the files directly in a folder; ignores events of its sub-folders.
class FolderWatch {
public:
    FolderWatch(const std::string& folder, std::uint32_t kinds)
    {
        EXPECT_GE(::inotify_add_watch(watch.get(), folder.c_str(), kinds), 0);
    }

    /// The kinds of the events since the last call, for the file called `name` or for all files.
    [[nodiscard]] std::vector<std::uint32_t> events(const std::string& name = "") const
    {
        char buffer[16384];
        const ssize_t length = ::read(watch.get(), buffer, sizeof buffer);
        std::vector<std::uint32_t> kinds;
        for (ssize_t at = 0; at < length;) {
            inotify_event event {};
            std::memcpy(&event, buffer + at, sizeof event);
            const bool isMeant = name.empty() || buffer + at + sizeof event == name;
            if (isMeant && (event.mask & IN_ISDIR) == 0)
                kinds.push_back(event.mask);
            at += static_cast<ssize_t>(sizeof event + event.len);
        }
        return kinds;
    }

private:
    FileDescriptor watch { ::inotify_init1(IN_NONBLOCK | IN_CLOEXEC) };
};

/// A source `from/Mix.wav` and an empty folder `to`.
class CopyTest : public testing::Test {
protected:
    [[nodiscard]] CopyOptions with(const std::vector<Refusal>& refusals) const
    {
        CopyOptions changed = options;
        for (const Refusal& refusal : refusals)
            refusal(changed.calls);
        return changed;
    }

    [[nodiscard]] std::set<std::string> names(const std::string& folder = "to") const
    {
        return files.names(folder);
    }

    TemporaryFolder files;
    std::string content = std::string(1 << 20, 'm') + "end";
    std::string source = files.write("from/Mix.wav", content);
    std::string target = files.makeFolder("to") + "/Mix.wav";
    CopyOptions options;
};

} // namespace stemvault
