#include "LinuxDesktop/FileEvents/EarlyWrites.h"

#include "LinuxDesktop/FileEvents/DirectoryReader.h"

#include <dirent.h>
#include <fcntl.h>

namespace stemvault {

namespace {

/// Events wait meanwhile.
constexpr std::chrono::milliseconds sliceLength { 1 };

} // namespace

EarlyWrites::EarlyWrites(WatchState& shared, const PolledFolders& polledFolders)
    : state(shared), polled(polledFolders)
{
}

void EarlyWrites::begin()
{
    buffer.resize(32UL * 1024);
    end = state.tree.end();
    watchedSince = wallClock();
}

bool EarlyWrites::runSlice()
{
    if (next == end)
        return false;
    const auto pause = std::chrono::steady_clock::now() + sliceLength;
    while (next != end && !state.isStopping && std::chrono::steady_clock::now() < pause)
        lookAt(next++);
    if (next == end)
        buffer = {};
    return true;
}

void EarlyWrites::lookAt(NodeId folder)
{
    // A folder that is mounted within itself has neither watch nor turn here.
    if (state.tree.watch(folder) < 0 && !polled.contains(folder))
        return;
    // Where others write as well, the times are those of another clock.
    if (polled.isSharedWithOthers(folder)
        || !state.tree.path(folder, WatchTree::Spelling::Resolved, path))
        return;
    const FileDescriptor descriptor = openFolder(path, O_RDONLY);
    if (!descriptor)
        return;
    DirectoryReader reader(descriptor.get(), buffer);
    while (const std::optional<DirectoryEntry> entry = reader.next())
        if (entry->type == DT_REG || entry->type == DT_UNKNOWN)
            lookAt(folder, descriptor.get(), entry->name);
}

void EarlyWrites::lookAt(NodeId folder, int descriptor, const char* name)
{
    const std::optional<FileStatus> status = fileStatus(descriptor, name);
    if (!status || !status->isModifiedSince(state.began) || status->modified > watchedSince
        || status->kind() != FileEventFlag::ItemIsFile)
        return;
    const RecentWrites::File file = RecentWrites::file(state.tree.ref(folder), name);
    if (status->modified <= state.writes.accountedUntil(file))
        return;
    state.writes.account(file, status->modified);
    state.reporter.report(
        folder, name, status->changesSince(state.began), EventCoalescer::More::Unsaid);
}

} // namespace stemvault
