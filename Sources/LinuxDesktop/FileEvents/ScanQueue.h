#pragma once

#include "LinuxDesktop/FileEvents/FileStatus.h"
#include "LinuxDesktop/FileEvents/WatchTree.h"

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace stemvault {

/// Why a folder is scanned, which decides what is reported of its contents.
enum class ScanReason : std::uint8_t {
    Start, ///< It was there before the stream: report what has changed since the stream began.
    Created, ///< It was made while we watched: report everything but what was moved into it.
    Arrived, ///< It came as a whole: report what has changed since.
    Check, ///< Events were lost: report what has changed since, and find out which folders moved.
};

/// One folder that must be watched and listed.
struct Scan {
    NodeRef node;
    ScanReason reason;
    FileTime since; ///< What changed at this moment or later is new.
    int misses = 0; ///< How often there was no folder at its path.
    bool isListingDue = false; ///< It is watched, but has not been listed yet.
};

/// The folders that are still to be scanned, last in first out, so that a tree is walked depth
/// first and the queue stays short.
class ScanQueue {
public:
    explicit ScanQueue(const WatchTree& watchTree) : tree(watchTree) { }

    void add(NodeId node, ScanReason reason, FileTime since);

    /// Queues a scan again whose folder was not at its path: it may have been renamed, by itself or
    /// with a folder above it, and the events that say so are read before the next slice. False
    /// when it has been tried often enough.
    [[nodiscard]] bool retry(Scan scan);

    /// Keeps a folder that may not be read until `retryUnreadable` is called for it or its parent.
    void addUnreadable(NodeId node, FileTime since);
    void retryUnreadable(NodeId parent);

    /// Events were lost. Until the queue is idle, known folders that turn up elsewhere are checked
    /// as well.
    void noteLoss(FileTime since) { lostSince = since; }
    [[nodiscard]] std::optional<FileTime> lossSince() const { return lostSince; }

    /// Begins a slice: queues what was put off and can be tried again. Whether there is work.
    [[nodiscard]] bool resume();

    /// The next scan whose folder has a path; absent at the end of the queue. Folders below a
    /// detached one are put off until the tree changes.
    [[nodiscard]] std::optional<Scan> next();

    /// Ends a slice.
    void pause();

    [[nodiscard]] bool isIdle() const { return scans.empty() && missed.empty(); }

private:
    const WatchTree& tree;
    std::vector<Scan> scans;
    std::vector<Scan> withoutPath; ///< Below a detached folder.
    std::vector<Scan> missed; ///< Until the events are read that say why.
    std::vector<std::pair<NodeRef, FileTime>> unreadable;
    std::uint32_t shapeWithoutPath = 0; ///< The tree's shape when `withoutPath` was added to.
    std::optional<FileTime> lostSince;
    std::string path;
};

} // namespace stemvault
