#include "LinuxDesktop/FileEvents/TreeWalker.h"

#include "LinuxDesktop/FileEvents/FileSystemTraits.h"
#include "Platform/FileEvents.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <dirent.h>
#include <fcntl.h>
#include <utility>

namespace stemvault::file_events {

namespace {

constexpr std::chrono::milliseconds sliceLength { 4 };

bool isOutOfDescriptors(int error)
{
    return error == EMFILE || error == ENFILE || error == ENOMEM;
}

} // namespace

TreeWalker::TreeWalker(WatchTree& watchTree, ScanQueue& scanQueue, WatchInstaller& watchInstaller,
    PendingRenames& renames, EventReporter& eventReporter, RecentWrites& recentWrites,
    const StreamClock& streamClock, InotifyCalls& systemCalls,
    const std::atomic<bool>& streamIsStopping, StartPolling pollFolder)
    : tree(watchTree), queue(scanQueue), installer(watchInstaller), pendingRenames(renames),
      reporter(eventReporter), writes(recentWrites), clock(streamClock), calls(systemCalls),
      isStopping(streamIsStopping), startPolling(std::move(pollFolder)), buffer(32UL * 1024)
{
}

bool TreeWalker::runSlice()
{
    scanVacatedPlaces(ScanReason::Arrived, clock.arrivalBound);
    if (!queue.resume())
        return false;
    const auto end = std::chrono::steady_clock::now() + sliceLength;
    while (!isStopping && std::chrono::steady_clock::now() < end) {
        const std::optional<Scan> next = queue.next();
        if (!next)
            break;
        scan(*next);
    }
    queue.pause();
    return true;
}

void TreeWalker::scanVacatedPlaces(ScanReason reason, FileTime since)
{
    for (const NodeRef& node : installer.takeVacatedPlaces())
        if (tree.isCurrent(node))
            queue.add(node.id, reason, since);
}

void TreeWalker::scan(Scan scan)
{
    NodeId node = scan.node.id;
    const WatchResult result = installer.install(node);
    scanVacatedPlaces(scan.reason, scan.since);
    if (result != WatchResult::Same)
        scan.since = pendingRenames.sinceNeverWatched(scan.since);
    switch (result) {
    case WatchResult::Fresh:
        scanFolder(node, scan);
        break;
    case WatchResult::Same:
        // The events of a known folder are complete, unless some were lost.
        if (const auto lostSince = queue.lossSince();
            scan.reason != ScanReason::Check && lostSince && node != scan.node.id)
            scan = { scan.node, ScanReason::Check, *lostSince };
        if (scan.reason == ScanReason::Check || scan.isListingDue)
            scanFolder(node, scan);
        break;
    case WatchResult::Replaced:
        reporter.report(node, FileEventFlag::MustScanSubDirs | FileEventFlag::ItemIsDir);
        scan.reason = ScanReason::Arrived;
        scanFolder(node, scan);
        break;
    case WatchResult::Unwatched:
        startPolling(node, PollReason::NoWatch);
        scanFolder(node, scan);
        break;
    case WatchResult::Unreadable:
        queue.addUnreadable(node, scan.since);
        break;
    case WatchResult::Gone:
        handleMissingFolder(node, scan);
        break;
    case WatchResult::Loop:
        break;
    }
}

void TreeWalker::scanFolder(NodeId node, Scan scan)
{
    if (!tree.path(node, WatchTree::Spelling::Resolved, path))
        return;
    scan.node = tree.ref(node);
    scan.isListingDue = true;
    const std::optional<FileStatus> status = fileStatus(path);
    if (!status) {
        static_cast<void>(queue.retry(scan));
        return;
    }
    const Device traits = device(status->device);
    if (traits.isShared)
        startPolling(node, PollReason::SharedWithOthers);
    // Timestamps on a shared drive come from its own clock. The folder was just created, so its
    // modification time shows how far that clock is behind.
    if (traits.isShared && scan.reason == ScanReason::Created)
        scan.since = std::min(scan.since, status->modified - (wallClock() - scan.since));
    if (scan.reason != ScanReason::Start) {
        list(node, scan, true);
        return;
    }
    // A new name changes the folder's modification time. If that is older than `since`, no file in
    // it needs to be checked, and a folder without subfolders need not even be read.
    const bool hasNewNames = status->modified >= scan.since;
    if (hasNewNames || !traits.countsFolders || status->links != 2)
        list(node, scan, hasNewNames);
}

void TreeWalker::list(NodeId node, const Scan& scan, bool areItemsReported)
{
    const FileDescriptor folder = openFolder(path, O_RDONLY);
    if (!folder) {
        if (isOutOfDescriptors(errno))
            startPolling(node, PollReason::NoWatch);
        else
            static_cast<void>(queue.retry(scan));
        return;
    }
    DirectoryReader reader(folder.get(), buffer);
    while (const std::optional<DirectoryEntry> entry = reader.next()) {
        if (isStopping)
            return;
        handleEntry(node, folder.get(), *entry, scan, areItemsReported);
    }
    if (scan.reason == ScanReason::Check)
        detachMissing(node);
}

void TreeWalker::handleEntry(
    NodeId node, int folder, const DirectoryEntry& entry, const Scan& scan, bool isReported)
{
    std::uint32_t kind = kindOfEntry(entry.type);
    std::uint32_t flags = 0;
    if (entry.type == DT_UNKNOWN || isReported) {
        const std::optional<FileStatus> status = fileStatus(folder, entry.name);
        if (!status)
            return;
        kind = status->kind();
        flags = status->changesSince(scan.since);
        // Content that is not reported now was written elsewhere or earlier, so a later close must
        // not report it either.
        if (kind == FileEventFlag::ItemIsFile && status->isModifiedSince(clock.began))
            writes.account(RecentWrites::file(tree.ref(node), entry.name), status->modified);
    }
    if (kind == FileEventFlag::ItemIsDir)
        handleSubfolder(node, entry.name, flags, scan);
    else if (isReported && flags != 0)
        reporter.report(node, entry.name, flags, EventCoalescer::More::Expected);
}

void TreeWalker::handleSubfolder(
    NodeId parent, std::string_view name, std::uint32_t flags, const Scan& scan)
{
    const NodeId known = tree.child(parent, name);
    if (known != noNode && scan.reason == ScanReason::Check) {
        tree.setSeen(known, true);
        queue.add(known, ScanReason::Check, scan.since);
    }
    if (known != noNode)
        return;
    const NodeId child = tree.add(parent, name);
    tree.setSeen(child, scan.reason == ScanReason::Check);
    if (flags != 0)
        reporter.report(child, flags);
    queue.add(child, scan.reason, scan.since);
}

/// Detaches the subfolders that the listing did not show; the same check may find them elsewhere.
void TreeWalker::detachMissing(NodeId node)
{
    NodeId next = noNode;
    for (NodeId child = tree.firstChild(node); child != noNode; child = next) {
        next = tree.nextSibling(child);
        if (tree.isSeen(child))
            tree.setSeen(child, false);
        else
            pendingRenames.detach(child, 0, {});
    }
}

void TreeWalker::handleMissingFolder(NodeId node, const Scan& scan)
{
    // RootTracker handles the roots.
    if (tree.parent(node) == noNode)
        return;
    if (scan.reason == ScanReason::Check)
        pendingRenames.detach(node, 0, {});
    else if (!queue.retry(scan))
        tree.remove(node);
}

TreeWalker::Device TreeWalker::device(std::uint64_t number)
{
    const auto known = devices.find(number);
    if (known != devices.end())
        return known->second;
    const std::uint32_t type = calls.fileSystemType(path.c_str());
    return devices[number] = { isSharedWithOthers(type), countsFoldersByLinks(type) };
}

} // namespace stemvault::file_events
