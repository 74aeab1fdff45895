#pragma once

#include "LinuxDesktop/FileEvents/EventCoalescer.h"
#include "LinuxDesktop/FileEvents/WatchTree.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace stemvault {

/// Puts what happened into the window, under its path as the consumer knows it. What happens in a
/// folder that is on the move waits until the folder has a path again.
class EventReporter {
public:
    EventReporter(WatchTree& watchTree, EventCoalescer& eventCoalescer)
        : tree(watchTree), coalescer(eventCoalescer)
    {
    }

    using More = EventCoalescer::More;

    /// Something named `name` in a folder.
    void report(NodeId folder, std::string_view name, std::uint32_t flags, More more);
    /// A folder itself.
    void report(NodeId folder, std::uint32_t flags);
    void report(std::string_view path, std::uint32_t flags);

    /// The flags gathered for an item so far; 0 if there are none.
    [[nodiscard]] std::uint32_t flagsOf(NodeId folder, std::string_view name);

    /// To be called when a batch was taken.
    void forgetLast() { lastFolder = noNode; }

    /// The path of an item as the consumer knows it; absent while the folder is on the move.
    [[nodiscard]] std::optional<std::string> path(NodeId folder, std::string_view name);

    /// To be called whenever folders have arrived somewhere, or are gone for good.
    void retryDeferred();

private:
    struct Deferred {
        NodeRef folder;
        std::string name;
        std::uint32_t flags;
        More more;
    };

    WatchTree& tree;
    EventCoalescer& coalescer;
    std::size_t add(std::string_view path, std::uint32_t flags, More more);
    [[nodiscard]] bool isLast(NodeId folder, std::string_view name) const
    {
        return lastFolder == folder && lastShape == tree.shape() && lastName == name;
    }

    std::string text;
    std::vector<Deferred> deferred;
    /// Events of one file mostly come in a row, and then its path need not be put together again.
    NodeId lastFolder = noNode;
    std::uint32_t lastShape = 0;
    std::string lastName;
    std::size_t lastEntry = 0;
};

} // namespace stemvault
