#pragma once

#include "Foundation/FileDescriptor.h"
#include "LinuxDesktop/FileEvents/EarlyWrites.h"
#include "LinuxDesktop/FileEvents/EventHandler.h"
#include "LinuxDesktop/FileEvents/RootTracker.h"
#include "LinuxDesktop/FileEvents/StreamOptions.h"
#include "LinuxDesktop/FileEvents/TreeWalker.h"
#include "LinuxDesktop/FileEvents/WatchState.h"

#include <atomic>
#include <functional>
#include <optional>
#include <span>

namespace stemvault {

/// The loop of a stream's one thread: read, sort, walk, deliver, wait. It sleeps without a clock
/// unless something is due.
class StreamWorker {
public:
    using Deliver = std::function<void(EventBatch)>;
    using Ready = std::function<void()>;

    /// `wakeUp` becomes readable when the worker must end.
    StreamWorker(const StreamOptions& options, InotifyCalls& calls, FileTime began,
        const std::atomic<bool>& isStopping, int wakeUp);

    /// Runs until it must end. `deliver` gets every batch, `ready` is called once, when everything
    /// that was there is watched; both on this thread.
    void run(const Deliver& deliver, const Ready& ready);

private:
    enum class Awaited { Everything, EndOnly };

    void turn(const Deliver& deliver);
    [[nodiscard]] bool drain();
    void sortAll(std::span<const std::byte> events);
    void followUp();
    void look();
    void deliverIfDue(const Deliver& deliver);
    void addKinds(EventBatch& batch) const;
    [[nodiscard]] bool workOn();
    void wait();
    [[nodiscard]] std::optional<EventCoalescer::Time> nextLook() const;
    [[nodiscard]] std::optional<EventCoalescer::Time> nextDue() const;
    void sleep(Awaited awaited, std::optional<EventCoalescer::Time> until);

    FileTime began;
    int wakeUp;
    WatchState state;
    TreeWalker walker;
    RootTracker roots;
    EventHandler sorter;
    EarlyWrites earlyWrites;
    std::optional<FileTime> lostSince;
    FileTime mountsKnownUntil; ///< No mount has come or gone before this moment unnoticed.
    bool hasReadEvents = false;
};

} // namespace stemvault
