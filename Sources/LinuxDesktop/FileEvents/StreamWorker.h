#pragma once

#include "LinuxDesktop/FileEvents/EarlyWrites.h"
#include "LinuxDesktop/FileEvents/EventCoalescer.h"
#include "LinuxDesktop/FileEvents/EventHandler.h"
#include "LinuxDesktop/FileEvents/EventReporter.h"
#include "LinuxDesktop/FileEvents/Inotify.h"
#include "LinuxDesktop/FileEvents/InotifyCalls.h"
#include "LinuxDesktop/FileEvents/MountTracker.h"
#include "LinuxDesktop/FileEvents/PendingRenames.h"
#include "LinuxDesktop/FileEvents/PolledFolders.h"
#include "LinuxDesktop/FileEvents/RecentWrites.h"
#include "LinuxDesktop/FileEvents/RenameHandler.h"
#include "LinuxDesktop/FileEvents/RootTracker.h"
#include "LinuxDesktop/FileEvents/ScanQueue.h"
#include "LinuxDesktop/FileEvents/StreamClock.h"
#include "LinuxDesktop/FileEvents/StreamOptions.h"
#include "LinuxDesktop/FileEvents/TreeWalker.h"
#include "LinuxDesktop/FileEvents/WatchInstaller.h"
#include "LinuxDesktop/FileEvents/WatchTree.h"
#include "LinuxDesktop/FileEvents/WriteDetector.h"

#include <atomic>
#include <cstddef>
#include <functional>
#include <optional>
#include <span>

namespace stemvault::file_events {

/// Owns the parts of a stream and runs the loop of its only thread: read and handle events, scan
/// folders, deliver, wait. It waits without a timeout unless something is due.
class StreamWorker {
public:
    using Deliver = std::function<void(EventBatch)>;
    using Ready = std::function<void()>;

    /// `wakeUp` becomes readable when the worker must stop.
    StreamWorker(const StreamOptions& options, InotifyCalls& calls, FileTime began,
        const std::atomic<bool>& mustStop, int wakeUp);

    /// Runs until it must stop. Calls `deliver` with every batch, and `ready` once, when everything
    /// that existed at the start is watched or polled; both on the calling thread.
    void run(const Deliver& deliver, const Ready& ready);

private:
    enum class Awaited { Everything, StopOnly };

    void runOnce(const Deliver& deliver);
    [[nodiscard]] bool drain();
    void handleAll(std::span<const std::byte> events);
    void handleDue();
    void poll();
    void deliverIfDue(const Deliver& deliver);
    void addKinds(EventBatch& batch) const;
    [[nodiscard]] bool workOn();
    void wait();
    [[nodiscard]] std::optional<EventCoalescer::Time> nextPoll() const;
    [[nodiscard]] std::optional<EventCoalescer::Time> nextDue() const;
    FileTime sleep(Awaited awaited, std::optional<EventCoalescer::Time> until);

    InotifyCalls& systemCalls;
    const std::atomic<bool>& isStopping;
    int wakeUp;
    StreamClock clock;
    Inotify inotify;
    WatchTree tree;
    EventCoalescer coalescer;
    EventReporter reporter { tree, coalescer };
    RecentWrites writes;
    PendingRenames pendingRenames { tree, clock };
    ScanQueue queue { tree };
    WatchInstaller installer { tree, inotify, pendingRenames, reporter };
    WriteDetector detector { tree, reporter, writes, clock };
    RenameHandler renames { tree, pendingRenames, queue, installer, detector, reporter, clock };
    EventHandler handler { tree, queue, installer, detector, renames, reporter, clock };
    PolledFolders polled;
    TreeWalker walker;
    EarlyWrites earlyWrites { tree, polled, writes, reporter, clock, isStopping };
    MountTracker mounts { tree, queue };
    RootTracker roots;
    std::optional<FileTime> lostSince; ///< Events from this moment on may have been lost.
    EventCoalescer::Time handledUntil; ///< The moment before the last read.
    FileTime mountsKnownUntil; ///< All mount changes before this moment have been noticed.
    bool hasReadEvents = false;
};

} // namespace stemvault::file_events
