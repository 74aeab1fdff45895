#include "LinuxDesktop/FileEvents/StreamWorker.h"

#include "Platform/FileEvents.h"

#include <algorithm>
#include <array>
#include <ctime>
#include <poll.h>
#include <sys/inotify.h>
#include <utility>

namespace stemvault::file_events {

namespace {

using Time = EventCoalescer::Time;

/// The longest time between an event and the moment the waiting thread runs again, not counting the
/// time that the thread waits for a processor.
constexpr std::chrono::milliseconds maxWakeUpTime { 100 };
/// While events stream in and nothing is due, the worker sleeps this long between two reads.
/// Reading many events at once costs a fraction of waking up for each.
constexpr std::chrono::milliseconds batchReadInterval { 5 };
/// A batch that is due waits this long for the scans in progress to end.
constexpr std::chrono::milliseconds maxDeliveryDelay { 20 };
constexpr int readsAtOnce = 64;

Time steadyNow()
{
    return std::chrono::steady_clock::now();
}

timespec timeUntil(Time time)
{
    const auto left = std::max(time - steadyNow(), std::chrono::steady_clock::duration::zero());
    const auto seconds = std::chrono::floor<std::chrono::seconds>(left);
    return { seconds.count(), std::chrono::nanoseconds(left - seconds).count() };
}

} // namespace

StreamWorker::StreamWorker(const StreamOptions& options, InotifyCalls& calls, FileTime began,
    const std::atomic<bool>& mustStop, int wakeUpDescriptor)
    : systemCalls(calls), isStopping(mustStop), wakeUp(wakeUpDescriptor), inotify(calls),
      coalescer(options.latency, options.firstEvent),
      polled(tree, queue, installer, pendingRenames, reporter, options.pollInterval, isStopping),
      walker(tree, queue, installer, pendingRenames, reporter, writes, clock, calls, isStopping,
          [this](NodeId folder, PollReason reason) { polled.add(folder, reason); }),
      roots(options, tree, inotify, queue, reporter, mounts, clock, calls)
{
    const FileTime start = began - clockGrain;
    clock = { start, start, start, start };
    mountsKnownUntil = start;
}

void StreamWorker::run(const Deliver& deliver, const Ready& ready)
{
    inotify.open();
    roots.start(clock.began);
    while (!isStopping && !queue.isIdle())
        runOnce(deliver);
    earlyWrites.begin();
    if (!isStopping && ready)
        ready();
    while (!isStopping)
        runOnce(deliver);
}

void StreamWorker::runOnce(const Deliver& deliver)
{
    const bool isDrained = drain();
    handleDue();
    if (isDrained)
        deliverIfDue(deliver);
    if (isDrained && !workOn())
        wait();
    else
        clock.arrivalBound = clock.watchedUntil;
}

/// Reads and handles events until there are none. Returns false if so many events arrived that it
/// stopped early to give other work a turn.
bool StreamWorker::drain()
{
    hasReadEvents = false;
    for (int reads = 0; reads < readsAtOnce; ++reads) {
        const FileTime now = wallClock();
        handledUntil = steadyNow();
        const std::span<const std::byte> events = inotify.read();
        if (events.empty()) {
            clock.watchedUntil = now - clockGrain;
            return true;
        }
        hasReadEvents = true;
        clock.readAt = wallClock();
        handleAll(events);
    }
    return false;
}

void StreamWorker::handleAll(std::span<const std::byte> events)
{
    while (const std::optional<InotifyEvent> event = takeInotifyEvent(events)) {
        if (event->has(IN_Q_OVERFLOW)) {
            lostSince = std::min(lostSince.value_or(clock.watchedUntil), clock.watchedUntil);
            writes.clear();
        }
        // Recheck at once, because the next events may come from a folder that is no longer a root.
        if (roots.notice(*event))
            roots.recheck();
        handler.handle(*event);
    }
}

void StreamWorker::handleDue()
{
    if (lostSince)
        roots.rescanAll(*std::exchange(lostSince, std::nullopt));
    roots.recheck();
    const Time now = steadyNow();
    if (const auto due = pendingRenames.due(); due && *due <= now && queue.isIdle())
        renames.expirePendingRenames();
    if (const auto due = nextPoll(); due && *due <= now)
        poll();
}

void StreamWorker::poll()
{
    if (!inotify.isOpen() && inotify.open())
        roots.rescanAll(clock.watchedUntil);
    if (roots.due())
        roots.requestRecheck();
    polled.poll(steadyNow());
}

void StreamWorker::deliverIfDue(const Deliver& deliver)
{
    const Time now = steadyNow();
    const std::optional<Time> due = coalescer.due();
    if (!due || *due > now || (!queue.isIdle() && now - *due < maxDeliveryDelay))
        return;
    EventBatch batch = coalescer.take(now);
    reporter.forgetLast();
    if (batch.paths.empty())
        return;
    addKinds(batch);
    deliver(std::move(batch));
}

/// Events show whether an item is a folder, but not whether it is a file or a link.
void StreamWorker::addKinds(EventBatch& batch) const
{
    constexpr std::uint32_t kinds =
        FileEventFlag::ItemIsFile | FileEventFlag::ItemIsDir | FileEventFlag::ItemIsSymlink;
    constexpr std::uint32_t leaving = FileEventFlag::ItemRemoved | FileEventFlag::ItemRenamed;
    for (std::size_t index = 0; index < batch.paths.size(); ++index) {
        std::uint32_t& flags = batch.flags[index];
        // The item that has the name now may differ in kind from the one that was removed or
        // renamed.
        const bool mayHaveChanged =
            (flags & leaving) != 0 && (flags & FileEventFlag::RootChanged) == 0;
        if ((flags & kinds) != 0 && !mayHaveChanged)
            continue;
        if (const std::optional<FileStatus> status = fileStatus(batch.paths[index]))
            flags |= status->kind();
        else if ((flags & kinds) == 0)
            flags |= FileEventFlag::ItemIsFile;
    }
}

bool StreamWorker::workOn()
{
    const bool hasWalked = walker.runSlice();
    inotify.retire(tree.takeUnusedWatches());
    const bool hasRemoved = inotify.removeSome(
        [this](int watch) { return tree.atWatch(watch) != noNode || roots.uses(watch); });
    const bool hasLooked = !hasWalked && earlyWrites.runSlice(handledUntil);
    return hasWalked || hasRemoved || hasLooked;
}

void StreamWorker::wait()
{
    const std::optional<Time> until = nextDue();
    const Time soon = steadyNow() + batchReadInterval;
    const bool isBusy = hasReadEvents && coalescer.due() && *coalescer.due() > soon;
    const FileTime before = wallClock();
    if (isBusy) {
        sleep(Awaited::StopOnly, std::min(soon, until.value_or(soon)));
        clock.arrivalBound = clock.watchedUntil;
        return;
    }
    const FileTime notBefore = sleep(Awaited::Everything, until);
    // If the sleep was long enough, the event that ended it has only just happened. Otherwise the
    // event may have happened before the sleep.
    clock.arrivalBound = notBefore > before ? notBefore : clock.watchedUntil;
}

std::optional<Time> StreamWorker::nextPoll() const
{
    const std::optional<Time> folders = polled.due();
    const std::optional<Time> followed = roots.due();
    return folders && followed ? std::min(folders, followed) : folders ? folders : followed;
}

std::optional<Time> StreamWorker::nextDue() const
{
    std::optional<Time> next;
    for (const std::optional<Time>& due :
        { coalescer.due(), pendingRenames.due(), nextPoll(), earlyWrites.due() })
        if (due && (!next || *due < *next))
            next = due;
    return next;
}

/// Returns a moment that is no later than the event that ended the sleep.
FileTime StreamWorker::sleep(Awaited awaited, std::optional<Time> until)
{
    std::array<pollfd, 3> awaiting { { { wakeUp, POLLIN, 0 }, { mounts.descriptor(), POLLPRI, 0 },
        { inotify.get(), POLLIN, 0 } } };
    timespec timeout {};
    if (until)
        timeout = timeUntil(*until);
    const std::chrono::nanoseconds delayBefore = systemCalls.runDelay();
    systemCalls.wait(std::span(awaiting).first(awaited == Awaited::StopOnly ? 1 : awaiting.size()),
        until ? &timeout : nullptr);
    const FileTime now = wallClock();
    const FileTime notBefore = now - maxWakeUpTime - (systemCalls.runDelay() - delayBefore);
    if (awaited == Awaited::StopOnly)
        return notBefore;
    if ((awaiting[1].revents & POLLPRI) != 0)
        mounts.noteChange(std::max(mountsKnownUntil, notBefore));
    mountsKnownUntil = now - clockGrain;
    return notBefore;
}

} // namespace stemvault::file_events
