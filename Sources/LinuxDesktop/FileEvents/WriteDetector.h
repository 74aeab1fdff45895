#pragma once

#include "LinuxDesktop/FileEvents/EventReporter.h"
#include "LinuxDesktop/FileEvents/InotifyEvent.h"
#include "LinuxDesktop/FileEvents/RecentWrites.h"
#include "LinuxDesktop/FileEvents/StreamClock.h"
#include "LinuxDesktop/FileEvents/WatchTree.h"

#include <cstdint>
#include <optional>
#include <string_view>

namespace stemvault::file_events {

/// Decides which events of a file mean that its content was written, and reports those. Touching a
/// file, setting its date, renaming it or opening it for writing raises some of the same events.
class WriteDetector {
public:
    WriteDetector(const WatchTree& watchTree, EventReporter& eventReporter, RecentWrites& recent,
        const StreamClock& streamClock)
        : tree(watchTree), reporter(eventReporter), writes(recent), clock(streamClock)
    {
    }

    /// IN_MODIFY
    void modified(NodeId folder, std::string_view name);
    /// IN_CLOSE_WRITE
    void closed(NodeId folder, std::string_view name);
    /// IN_ATTRIB
    void attributesChanged(NodeId folder, std::string_view name);

    /// Call it when a file was removed or renamed away. Returns whether it was being written.
    bool nameLost(NodeId folder, std::string_view name);
    /// Call it when a file was renamed to this name.
    void nameGained(NodeId folder, std::string_view name, bool isBeingWritten);

private:
    [[nodiscard]] bool isOnlyDated(NodeId folder, std::string_view name) const;
    [[nodiscard]] bool isWrittenUnnoticed(NodeId folder, std::string_view name) const;
    [[nodiscard]] RecentWrites::File file(NodeId folder, std::string_view name) const
    {
        return RecentWrites::file(tree.ref(folder), name);
    }

    const WatchTree& tree;
    EventReporter& reporter;
    RecentWrites& writes;
    const StreamClock& clock;
};

/// The status of an item in a watched folder.
[[nodiscard]] std::optional<FileStatus> itemStatus(
    const WatchTree& tree, NodeId folder, std::string_view name);

} // namespace stemvault::file_events
