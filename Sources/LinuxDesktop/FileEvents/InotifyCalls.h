#pragma once

#include <cstddef>
#include <cstdint>

namespace stemvault {

/// The system calls of the event stream whose failures tests bring about. Each returns the kernel's
/// result or a negative errno. May be called from any thread.
class InotifyCalls {
public:
    InotifyCalls() = default;
    InotifyCalls(const InotifyCalls&) = delete;
    InotifyCalls& operator=(const InotifyCalls&) = delete;
    virtual ~InotifyCalls() = default;

    /// A new descriptor that does not block.
    [[nodiscard]] virtual int open();
    [[nodiscard]] virtual int addWatch(int descriptor, const char* path, std::uint32_t mask);
    virtual int removeWatch(int descriptor, int watch);
    [[nodiscard]] virtual long read(int descriptor, void* buffer, std::size_t size);

    /// The magic number of the file system that holds `path`; 0 if statfs fails.
    [[nodiscard]] virtual std::uint32_t fileSystemType(const char* path);

    /// The calls of the running system.
    [[nodiscard]] static InotifyCalls& system();
};

} // namespace stemvault
