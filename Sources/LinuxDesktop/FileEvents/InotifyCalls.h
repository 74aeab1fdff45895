#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <ctime>
#include <poll.h>
#include <span>

namespace stemvault::file_events {

/// The system calls of the event stream that tests replace to inject failures. Each returns the
/// kernel's result or, unless its comment says otherwise, a negative errno. May be called from any
/// thread.
class InotifyCalls {
public:
    InotifyCalls() = default;
    InotifyCalls(const InotifyCalls&) = delete;
    InotifyCalls& operator=(const InotifyCalls&) = delete;
    virtual ~InotifyCalls() = default;

    /// A new non-blocking inotify descriptor.
    [[nodiscard]] virtual int open();
    [[nodiscard]] virtual int addWatch(int descriptor, const char* path, std::uint32_t mask);
    virtual int removeWatch(int descriptor, int watch);
    [[nodiscard]] virtual long read(int descriptor, void* buffer, std::size_t size);

    /// Like ppoll(2), without a signal mask.
    virtual int wait(std::span<pollfd> awaited, const timespec* timeout);

    /// The total time for which the calling thread was ready to run but had no processor; zero if
    /// the kernel does not count it.
    [[nodiscard]] virtual std::chrono::nanoseconds runDelay();

    /// The magic number of the file system that holds `path`; 0 if statfs fails.
    [[nodiscard]] virtual std::uint32_t fileSystemType(const char* path);

    /// The real system calls.
    [[nodiscard]] static InotifyCalls& system();
};

} // namespace stemvault::file_events
