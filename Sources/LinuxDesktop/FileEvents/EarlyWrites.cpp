#include "LinuxDesktop/FileEvents/EarlyWrites.h"

#include "LinuxDesktop/FileEvents/DirectoryReader.h"
#include "Platform/FileEvents.h"

#include <chrono>
#include <dirent.h>
#include <fcntl.h>

namespace stemvault::file_events {

namespace {

/// Short, because events are read only between slices.
constexpr std::chrono::milliseconds sliceLength { 1 };

} // namespace

EarlyWrites::EarlyWrites(const WatchTree& watchTree, const PolledFolders& polledFolders,
    RecentWrites& recentWrites, EventReporter& eventReporter, const StreamClock& streamClock,
    const std::atomic<bool>& streamIsStopping)
    : tree(watchTree), polled(polledFolders), writes(recentWrites), reporter(eventReporter),
      clock(streamClock), isStopping(streamIsStopping)
{
}

void EarlyWrites::begin()
{
    buffer.resize(32UL * 1024);
    end = tree.end();
    watchedSince = wallClock();
    start = std::chrono::steady_clock::now() + clockGrain;
}

std::optional<EarlyWrites::Time> EarlyWrites::due() const
{
    return next == end ? std::nullopt : std::optional(start);
}

bool EarlyWrites::runSlice(Time handledUntil)
{
    if (next == end || handledUntil < start)
        return false;
    const auto pause = std::chrono::steady_clock::now() + sliceLength;
    while (next != end && !isStopping && std::chrono::steady_clock::now() < pause)
        check(next++);
    if (next == end)
        buffer = {};
    return true;
}

void EarlyWrites::check(NodeId folder)
{
    // A folder that is mounted within itself is neither watched nor polled.
    if (tree.watch(folder) < 0 && !polled.contains(folder))
        return;
    // File times on a shared drive come from the server's clock.
    if (polled.isSharedWithOthers(folder)
        || !tree.path(folder, WatchTree::Spelling::Resolved, path))
        return;
    const FileDescriptor descriptor = openFolder(path, O_RDONLY);
    if (!descriptor)
        return;
    DirectoryReader reader(descriptor.get(), buffer);
    while (const std::optional<DirectoryEntry> entry = reader.next())
        if (entry->type == DT_REG || entry->type == DT_UNKNOWN)
            check(folder, descriptor.get(), entry->name);
}

void EarlyWrites::check(NodeId folder, int descriptor, const char* name)
{
    const std::optional<FileStatus> status = fileStatus(descriptor, name);
    if (!status || !status->isModifiedSince(clock.began) || status->modified > watchedSince
        || status->kind() != FileEventFlag::ItemIsFile)
        return;
    const RecentWrites::File file = RecentWrites::file(tree.ref(folder), name);
    if (status->modified <= writes.accountedUntil(file))
        return;
    writes.account(file, status->modified);
    reporter.report(folder, name, status->changesSince(clock.began), EventCoalescer::More::Unsaid);
}

} // namespace stemvault::file_events
