#pragma once

#include "Foundation/FileDescriptor.h"
#include "LinuxDesktop/FileEvents/InotifyCalls.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <vector>

namespace stemvault::file_events {

/// The inotify descriptor of a stream. While the user's limit on inotify descriptors is reached,
/// it stays closed: `watch` fails with -EMFILE and `read` returns nothing.
class Inotify {
public:
    explicit Inotify(InotifyCalls& systemCalls);

    bool open();
    [[nodiscard]] bool isOpen() const { return descriptor.isOpen(); }
    [[nodiscard]] int get() const { return descriptor.get(); }

    /// Watches the item at a path of any length, without following a link. Returns the watch, which
    /// is the same for the same inode, or a negative errno.
    [[nodiscard]] int watch(const std::string& path, std::uint32_t mask);

    /// A later `removeSome` removes the watch, unless it is in use again by then.
    void retire(int watch) { retired.push_back(watch); }
    void retire(const std::vector<int>& watches);

    /// Removes some of the retired watches. Each removal raises an event, and too many at once
    /// would overflow the kernel's queue. Returns whether there was anything to do.
    bool removeSome(const std::function<bool(int watch)>& isInUse);

    /// Reads as many events as fit into the buffer; empty when all have been read.
    [[nodiscard]] std::span<const std::byte> read();

private:
    [[nodiscard]] int watchThroughFolder(const std::string& path, std::uint32_t mask);

    InotifyCalls& calls;
    FileDescriptor descriptor;
    std::vector<int> retired;
    std::vector<std::byte> buffer;
};

} // namespace stemvault::file_events
