#pragma once

#include "Foundation/FileDescriptor.h"
#include "LinuxDesktop/FileEvents/InotifyCalls.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <vector>

namespace stemvault {

/// The one inotify descriptor of a stream. While there is none (all are in use), watches fail with
/// -EMFILE and there is never anything to read.
class Inotify {
public:
    explicit Inotify(InotifyCalls& systemCalls);

    bool open();
    [[nodiscard]] bool isOpen() const { return descriptor.isOpen(); }
    [[nodiscard]] int get() const { return descriptor.get(); }
    void close() { descriptor.reset(); }

    /// Watches what stands at a path of any length, a link itself. The watch, the same one for the
    /// same inode, or a negative errno.
    [[nodiscard]] int watch(const std::string& path, std::uint32_t mask);

    /// Lets go of a watch some time later, unless it is in use again by then.
    void retire(int watch) { retired.push_back(watch); }
    void retire(const std::vector<int>& watches);

    /// Removes some of the retired watches; the kernel answers each removal with an event, and too
    /// many at once would overflow its queue. Whether there was something to do.
    bool removeSome(const std::function<bool(int watch)>& isInUse);

    /// What there is to read, as far as it fits; nothing when all has been read.
    [[nodiscard]] std::span<const std::byte> read();

private:
    [[nodiscard]] int watchThroughFolder(const std::string& path, std::uint32_t mask);

    InotifyCalls& calls;
    FileDescriptor descriptor;
    std::vector<int> retired;
    std::vector<std::byte> buffer;
};

} // namespace stemvault
