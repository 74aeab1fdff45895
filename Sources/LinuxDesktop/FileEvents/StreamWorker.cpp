#include "LinuxDesktop/FileEvents/StreamWorker.h"

#include <algorithm>
#include <array>
#include <ctime>
#include <poll.h>
#include <utility>

namespace stemvault {

namespace {

using Time = EventCoalescer::Time;

/// How long a sleeping thread may take to notice that it was woken.
constexpr std::chrono::milliseconds maxWakeUpTime { 100 };
/// While events stream in, reading them in gulps costs a fraction of reading each at once.
constexpr std::chrono::milliseconds batchReadInterval { 5 };
/// A long walk holds a batch up no longer than this.
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

StreamWorker::StreamWorker(const StreamOptions& options, InotifyCalls& calls, FileTime streamBegan,
    const std::atomic<bool>& isStopping, int wakeUpDescriptor)
    : began(streamBegan), wakeUp(wakeUpDescriptor), state(options, calls, isStopping),
      walker(state), roots(state, walker, options.paths), sorter(state, walker),
      earlyWrites(state, walker.polled())
{
}

void StreamWorker::run(const Deliver& deliver, const Ready& ready)
{
    state.began = state.watchedUntil = state.arrivalBound = mountsKnownUntil = began - clockGrain;
    state.inotify.open();
    roots.start(state.watchedUntil);
    while (!state.isStopping && !walker.isIdle())
        turn(deliver);
    earlyWrites.begin();
    if (!state.isStopping && ready)
        ready();
    while (!state.isStopping)
        turn(deliver);
}

void StreamWorker::turn(const Deliver& deliver)
{
    const bool isDrained = drain();
    followUp();
    if (isDrained)
        deliverIfDue(deliver);
    if (isDrained && !workOn())
        wait();
    else
        state.arrivalBound = state.watchedUntil;
}

/// False if there may be more to read, because so much comes that other work must have its turn.
bool StreamWorker::drain()
{
    hasReadEvents = false;
    for (int reads = 0; reads < readsAtOnce; ++reads) {
        const FileTime now = wallClock();
        const std::span<const std::byte> events = state.inotify.read();
        if (events.empty()) {
            state.watchedUntil = now - clockGrain;
            return true;
        }
        hasReadEvents = true;
        state.readAt = wallClock();
        sortAll(events);
    }
    return false;
}

void StreamWorker::sortAll(std::span<const std::byte> events)
{
    while (const std::optional<InotifyEvent> event = takeInotifyEvent(events)) {
        if (event->has(IN_Q_OVERFLOW)) {
            lostSince = std::min(lostSince.value_or(state.watchedUntil), state.watchedUntil);
            state.writes.clear();
        }
        // At once, for what follows may have happened in a folder that is no root any more.
        if (roots.notice(*event))
            roots.recheck();
        sorter.sort(*event);
    }
}

void StreamWorker::followUp()
{
    if (lostSince)
        roots.lookThrough(*std::exchange(lostSince, std::nullopt));
    roots.recheck();
    const Time now = steadyNow();
    if (const auto due = state.pendingRenames.due(); due && *due <= now && walker.isIdle())
        sorter.expirePendingRenames();
    if (const auto due = nextLook(); due && *due <= now)
        look();
}

void StreamWorker::look()
{
    if (!state.inotify.isOpen() && state.inotify.open())
        roots.lookThrough(state.watchedUntil);
    if (roots.due())
        roots.suspect();
    walker.polled().look(steadyNow());
}

void StreamWorker::deliverIfDue(const Deliver& deliver)
{
    const Time now = steadyNow();
    const std::optional<Time> due = state.coalescer.due();
    if (!due || *due > now || (!walker.isIdle() && now - *due < maxDeliveryDelay))
        return;
    EventBatch batch = state.coalescer.take(now);
    state.reporter.forgetLast();
    if (batch.paths.empty())
        return;
    addKinds(batch);
    deliver(std::move(batch));
}

/// The kernel tells folders from the rest, but not files from links.
void StreamWorker::addKinds(EventBatch& batch) const
{
    constexpr std::uint32_t kinds =
        FileEventFlag::ItemIsFile | FileEventFlag::ItemIsDir | FileEventFlag::ItemIsSymlink;
    constexpr std::uint32_t leaving = FileEventFlag::ItemRemoved | FileEventFlag::ItemRenamed;
    for (std::size_t index = 0; index < batch.paths.size(); ++index) {
        std::uint32_t& flags = batch.flags[index];
        // What has left may have been of another kind than what bears the name now.
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
    const bool hasRemoved = state.inotify.removeSome(
        [this](int watch) { return state.tree.atWatch(watch) != noNode || roots.guards(watch); });
    const bool hasLooked = !hasWalked && earlyWrites.runSlice();
    return hasWalked || hasRemoved || hasLooked;
}

void StreamWorker::wait()
{
    std::optional<Time> until = nextDue();
    const Time soon = steadyNow() + batchReadInterval;
    const bool isBusy = hasReadEvents && state.coalescer.due() && *state.coalescer.due() > soon;
    const FileTime before = wallClock();
    if (isBusy)
        sleep(Awaited::EndOnly, std::min(soon, until.value_or(soon)));
    else
        sleep(Awaited::Everything, until);
    // Whatever woke us has happened only now, unless it was there before we lay down.
    const FileTime after = wallClock();
    state.arrivalBound =
        !isBusy && after - before > maxWakeUpTime ? after - maxWakeUpTime : state.watchedUntil;
}

std::optional<Time> StreamWorker::nextLook() const
{
    const std::optional<Time> polled = walker.polled().due();
    const std::optional<Time> followed = roots.due();
    return polled && followed ? std::min(polled, followed) : polled ? polled : followed;
}

std::optional<Time> StreamWorker::nextDue() const
{
    std::optional<Time> next;
    for (const std::optional<Time>& due :
        { state.coalescer.due(), state.pendingRenames.due(), nextLook() })
        if (due && (!next || *due < *next))
            next = due;
    return next;
}

void StreamWorker::sleep(Awaited awaited, std::optional<Time> until)
{
    std::array<pollfd, 3> awaiting { { { wakeUp, POLLIN, 0 },
        { roots.mountTable().get(), POLLPRI, 0 }, { state.inotify.get(), POLLIN, 0 } } };
    const nfds_t count = awaited == Awaited::EndOnly ? 1 : awaiting.size();
    timespec timeout {};
    if (until)
        timeout = timeUntil(*until);
    (void)ppoll(awaiting.data(), count, until ? &timeout : nullptr, nullptr);
    if (awaited == Awaited::EndOnly)
        return;
    const FileTime now = wallClock();
    if ((awaiting[1].revents & POLLPRI) != 0)
        roots.noticeMounts(std::max(mountsKnownUntil, now - maxWakeUpTime));
    mountsKnownUntil = now - clockGrain;
}

} // namespace stemvault
