#include "LinuxDesktop/FileEvents/InotifyCalls.h"

#include <cerrno>
#include <sys/inotify.h>
#include <sys/statfs.h>
#include <unistd.h>

namespace stemvault {

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

std::uint32_t InotifyCalls::fileSystemType(const char* path)
{
    struct statfs status { };
    return ::statfs(path, &status) == 0 ? static_cast<std::uint32_t>(status.f_type) : 0;
}

InotifyCalls& InotifyCalls::system()
{
    // Never destroyed: a worker may outlive the end of main by a moment.
    static InotifyCalls& calls = *new InotifyCalls;
    return calls;
}

} // namespace stemvault
