#pragma once

#include "LinuxDesktop/FileEvents/FileStatus.h"
#include "LinuxDesktop/FileEvents/WatchTree.h"

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace stemvault::file_events {

/// Why a folder is scanned. Every scan reports what has changed since `Scan::since`.
enum class ScanReason : std::uint8_t {
    Start, ///< It existed when the stream began.
    Created, ///< It was created while the stream was running.
    Arrived, ///< It arrived together with its contents.
    Check, ///< Events may have been lost, so the scan also finds out which folders moved.
};

/// One folder that must be watched and listed.
struct Scan {
    NodeRef node;
    ScanReason reason;
    FileTime since; ///< Items that changed at this moment or later are new.
    int misses = 0; ///< How often no folder was found at its path.
    bool isListingDue = false; ///< It is watched, but has not been listed yet.
};

/// The folders that are still to be scanned, last in, first out, so that a tree is walked depth
/// first and the queue stays short.
class ScanQueue {
public:
    explicit ScanQueue(const WatchTree& watchTree) : tree(watchTree) { }

    void add(NodeId node, ScanReason reason, FileTime since);

    /// Queues a scan again because no folder was found at its path. The folder or one above it may
    /// have been renamed, and the events of that are read before the next slice. False when the
    /// scan has been tried often enough.
    [[nodiscard]] bool retry(Scan scan);

    /// Keeps a folder that cannot be read until `retryUnreadable` is called for it or its parent.
    void addUnreadable(NodeId node, FileTime since);
    void retryUnreadable(NodeId parent);

    /// Call it when events were lost. Until the queue is idle, known folders that turn up elsewhere
    /// are then checked as well.
    void noteLoss(FileTime since) { lostSince = since; }
    [[nodiscard]] std::optional<FileTime> lossSince() const { return lostSince; }

    /// Begins a slice: queues postponed scans that can be tried again. Returns whether any scan is
    /// queued.
    [[nodiscard]] bool resume();

    /// Removes and returns the next scan whose folder has a path; absent at the end of the queue.
    /// Scans of folders below a detached one are postponed until the tree changes.
    [[nodiscard]] std::optional<Scan> next();

    /// Ends a slice.
    void pause();

    [[nodiscard]] bool isIdle() const { return scans.empty() && missed.empty(); }

private:
    const WatchTree& tree;
    std::vector<Scan> scans;
    std::vector<Scan> withoutPath; ///< Below a detached folder.
    std::vector<Scan> missed; ///< To be tried again in the next slice.
    std::vector<std::pair<NodeRef, FileTime>> unreadable;
    std::uint32_t shapeWithoutPath = 0; ///< The tree's shape at the last addition to `withoutPath`.
    std::optional<FileTime> lostSince;
    std::string path;
};

} // namespace stemvault::file_events
