#include "LinuxDesktop/FileEvents/InotifyCalls.h"

#include "Foundation/FileDescriptor.h"

#include <array>
#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <sys/inotify.h>
#include <sys/statfs.h>
#include <unistd.h>

namespace stemvault::file_events {

namespace {

template <typename Number> Number orError(Number answer)
{
    return answer < 0 ? static_cast<Number>(-errno) : answer;
}

} // namespace

int InotifyCalls::open()
{
    return orError(::inotify_init1(IN_NONBLOCK | IN_CLOEXEC));
}

int InotifyCalls::addWatch(int descriptor, const char* path, std::uint32_t mask)
{
    return orError(::inotify_add_watch(descriptor, path, mask));
}

int InotifyCalls::removeWatch(int descriptor, int watch)
{
    return orError(::inotify_rm_watch(descriptor, watch));
}

long InotifyCalls::read(int descriptor, void* buffer, std::size_t size)
{
    return orError(::read(descriptor, buffer, size));
}

int InotifyCalls::wait(std::span<pollfd> awaited, const timespec* timeout)
{
    return orError(::ppoll(awaited.data(), awaited.size(), timeout, nullptr));
}

std::chrono::nanoseconds InotifyCalls::runDelay()
{
    // The fields are the time on a processor, the time spent waiting for one, and the run count.
    std::array<char, 64> text {};
    const FileDescriptor file(::open("/proc/thread-self/schedstat", O_RDONLY | O_CLOEXEC));
    if (!file || ::read(file.get(), text.data(), text.size() - 1) <= 0)
        return {};
    char* end = nullptr;
    static_cast<void>(std::strtoull(text.data(), &end, 10));
    return std::chrono::nanoseconds(std::strtoull(end, nullptr, 10));
}

std::uint32_t InotifyCalls::fileSystemType(const char* path)
{
    struct statfs status { };
    return ::statfs(path, &status) == 0 ? static_cast<std::uint32_t>(status.f_type) : 0;
}

InotifyCalls& InotifyCalls::system()
{
    // Never destroyed, because a worker may run for a moment after main has returned.
    static InotifyCalls& calls = *new InotifyCalls;
    return calls;
}

} // namespace stemvault::file_events
