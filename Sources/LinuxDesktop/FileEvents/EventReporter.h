#pragma once

#include "LinuxDesktop/FileEvents/EventCoalescer.h"
#include "LinuxDesktop/FileEvents/WatchTree.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace stemvault::file_events {

/// Passes changes to the coalescer under the path that the consumer knows. Changes in a folder
/// whose rename is pending are kept until the folder has a path again.
class EventReporter {
public:
    EventReporter(const WatchTree& watchTree, EventCoalescer& eventCoalescer)
        : tree(watchTree), coalescer(eventCoalescer)
    {
    }

    using More = EventCoalescer::More;

    /// Reports the item `name` in a folder.
    void report(NodeId folder, std::string_view name, std::uint32_t flags, More more);
    /// Reports the folder itself.
    void report(NodeId folder, std::uint32_t flags);
    void report(std::string_view path, std::uint32_t flags);

    /// The flags gathered for an item so far; 0 if there are none.
    [[nodiscard]] std::uint32_t flagsOf(NodeId folder, std::string_view name);

    /// Call it whenever a batch is taken, because that renumbers the entries.
    void forgetLast() { lastFolder = noNode; }

    /// The path of an item as the consumer knows it; absent while the folder's rename is pending.
    [[nodiscard]] std::optional<std::string> path(NodeId folder, std::string_view name);

    /// Call it whenever detached folders have been attached or removed.
    void retryDeferred();

private:
    struct Deferred {
        NodeRef folder;
        std::string name;
        std::uint32_t flags;
        More more;
    };

    std::size_t add(std::string_view path, std::uint32_t flags, More more);
    [[nodiscard]] bool isLast(NodeId folder, std::string_view name) const
    {
        return lastFolder == folder && lastShape == tree.shape() && lastName == name;
    }

    const WatchTree& tree;
    EventCoalescer& coalescer;
    std::string text;
    std::vector<Deferred> deferred;
    /// The item reported last. Events of one file mostly come in a row, so its path is built once.
    NodeId lastFolder = noNode;
    std::uint32_t lastShape = 0;
    std::string lastName;
    std::size_t lastEntry = 0;
};

} // namespace stemvault::file_events
