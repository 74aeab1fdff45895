#pragma once

#include "LinuxDesktop/FileEvents/EventCoalescer.h"
#include "LinuxDesktop/FileEvents/EventReporter.h"
#include "LinuxDesktop/FileEvents/FileStatus.h"
#include "LinuxDesktop/FileEvents/Inotify.h"
#include "LinuxDesktop/FileEvents/PendingRenames.h"
#include "LinuxDesktop/FileEvents/RecentWrites.h"
#include "LinuxDesktop/FileEvents/StreamOptions.h"
#include "LinuxDesktop/FileEvents/WatchTree.h"
#include "Platform/FileEvents.h"

#include <atomic>
#include <chrono>
#include <cstdint>
#include <string>
#include <sys/inotify.h>
#include <utility>
#include <vector>

namespace stemvault {

/// What the parts of a running stream share. All of it belongs to the worker thread, except that
/// anybody may ask it to end.
struct WatchState {
    WatchState(
        const StreamOptions& options, InotifyCalls& systemCalls, const std::atomic<bool>& isEnding)
        : pollInterval(options.pollInterval), calls(systemCalls), isStopping(isEnding),
          inotify(systemCalls), coalescer(options.latency, options.firstEvent)
    {
    }

    /// Every mask is added to what the watch has already, for one inode may serve several ends.
    static constexpr std::uint32_t folderMask = IN_CREATE | IN_MODIFY | IN_CLOSE_WRITE | IN_ATTRIB
        | IN_MOVED_FROM | IN_MOVED_TO | IN_DELETE | IN_ONLYDIR | IN_EXCL_UNLINK | IN_MASK_ADD;

    /// How often to look at what the kernel does not tell.
    const std::chrono::milliseconds pollInterval;
    InotifyCalls& calls;
    const std::atomic<bool>& isStopping;
    Inotify inotify;
    WatchTree tree;
    EventCoalescer coalescer;
    EventReporter reporter { tree, coalescer };
    PendingRenames pendingRenames;
    /// Nodes for whatever stands now where a folder was before it was found elsewhere.
    std::vector<NodeRef> vacated;
    RecentWrites writes;
    /// When the stream began, less the clock's grain.
    FileTime began;
    /// When the events that are being sorted were read.
    FileTime readAt;
    /// Whatever happened before this moment has been read.
    FileTime watchedUntil;
    /// What arrives now was not there yet at this moment: as a rule much later than the above.
    FileTime arrivalBound;

    void remove(NodeId node)
    {
        std::vector<int> unused;
        tree.remove(node, unused);
        inotify.retire(unused);
    }

    void removeBelow(NodeId node)
    {
        std::vector<int> unused;
        tree.removeBelow(node, unused);
        inotify.retire(unused);
    }

    /// Takes a folder from its place until it is known where it went.
    void depart(NodeId node, std::uint32_t cookie, std::string formerPath,
        const PendingRename& replacement = {})
    {
        pendingRenames.add({ cookie, std::move(formerPath), FileEventFlag::ItemIsDir,
            tree.ref(node), tree.ref(tree.parent(node)), std::string(tree.name(node)),
            std::chrono::steady_clock::now() + PendingRenames::pairingTimeout, arrivalBound,
            replacement.formerParent, replacement.formerName, tree.watch(node) < 0 });
        tree.detach(node);
    }
};

} // namespace stemvault
