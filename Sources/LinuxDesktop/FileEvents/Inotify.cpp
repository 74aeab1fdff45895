#include "LinuxDesktop/FileEvents/Inotify.h"

#include "LinuxDesktop/FileEvents/FileStatus.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <fcntl.h>
#include <sys/inotify.h>

namespace stemvault::file_events {

namespace {

constexpr std::size_t bufferSize = 64UL * 1024;
constexpr std::size_t removalsAtOnce = 2048;

} // namespace

Inotify::Inotify(InotifyCalls& systemCalls) : calls(systemCalls), buffer(bufferSize) { }

bool Inotify::open()
{
    if (const int opened = calls.open(); opened >= 0)
        descriptor = FileDescriptor(opened);
    return descriptor.isOpen();
}

int Inotify::watch(const std::string& path, std::uint32_t mask)
{
    if (!descriptor)
        return -EMFILE;
    if (path.size() >= PATH_MAX)
        return watchThroughFolder(path, mask);
    const char* const name = path.empty() ? "/" : path.c_str();
    return calls.addWatch(descriptor.get(), name, mask | IN_DONT_FOLLOW);
}

int Inotify::watchThroughFolder(const std::string& path, std::uint32_t mask)
{
    const FileDescriptor folder = openFolder(path, O_PATH);
    if (!folder)
        return -errno;
    const std::string name = "/proc/self/fd/" + std::to_string(folder.get());
    return calls.addWatch(descriptor.get(), name.c_str(), mask);
}

void Inotify::retire(const std::vector<int>& watches)
{
    retired.insert(retired.end(), watches.begin(), watches.end());
}

bool Inotify::removeSome(const std::function<bool(int)>& isInUse)
{
    if (retired.empty())
        return false;
    for (std::size_t left = removalsAtOnce; left > 0 && !retired.empty(); --left) {
        if (!isInUse(retired.back()))
            calls.removeWatch(descriptor.get(), retired.back());
        retired.pop_back();
    }
    return true;
}

std::span<const std::byte> Inotify::read()
{
    if (!descriptor)
        return {};
    const long size = calls.read(descriptor.get(), buffer.data(), buffer.size());
    return std::span<const std::byte>(buffer).first(static_cast<std::size_t>(std::max(size, 0L)));
}

} // namespace stemvault::file_events
