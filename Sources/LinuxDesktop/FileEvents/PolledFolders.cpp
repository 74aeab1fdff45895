#include "LinuxDesktop/FileEvents/PolledFolders.h"

#include "LinuxDesktop/FileEvents/DirectoryReader.h"
#include "Platform/FileEvents.h"

#include <algorithm>
#include <fcntl.h>
#include <functional>
#include <string>

namespace stemvault::file_events {

namespace {

constexpr std::chrono::milliseconds maxPollDuration { 50 };

/// How far another computer's clock may be off if the times of its folders do not show it.
constexpr std::chrono::minutes maxClockError { 1 };

} // namespace

PolledFolders::PolledFolders(WatchTree& watchTree, ScanQueue& scanQueue,
    WatchInstaller& watchInstaller, PendingRenames& renames, EventReporter& eventReporter,
    std::chrono::milliseconds interval, const std::atomic<bool>& streamIsStopping)
    : tree(watchTree), queue(scanQueue), installer(watchInstaller), pendingRenames(renames),
      reporter(eventReporter), pollInterval(interval), isStopping(streamIsStopping),
      buffer(32UL * 1024)
{
}

void PolledFolders::add(NodeId node, PollReason reason)
{
    Folder& folder = folders[node];
    if (folder.node.id == node && tree.isCurrent(folder.node))
        return;
    folder = { tree.ref(node), reason, {}, {}, {} };
    list(folder, true);
    if (!nextPoll)
        nextPoll = std::chrono::steady_clock::now() + pollInterval;
}

bool PolledFolders::isSharedWithOthers(NodeId node) const
{
    const auto folder = folders.find(node);
    return folder != folders.end() && folder->second.reason == PollReason::SharedWithOthers;
}

std::optional<EventCoalescer::Time> PolledFolders::due() const
{
    return folders.empty() ? std::nullopt : nextPoll;
}

void PolledFolders::poll(EventCoalescer::Time now)
{
    const auto end = now + maxPollDuration;
    auto folder = folders.lower_bound(nextInTurn);
    for (std::size_t left = folders.size(); left > 0 && !isStopping; --left) {
        if (folder == folders.end())
            folder = folders.begin();
        poll(folder->second);
        folder = folder->second.node.id == noNode ? folders.erase(folder) : std::next(folder);
        if (std::chrono::steady_clock::now() > end)
            break;
    }
    nextInTurn = folder == folders.end() ? 0 : folder->first;
    nextPoll = folders.empty() ? std::nullopt
                               : std::optional(std::chrono::steady_clock::now() + pollInterval);
}

/// Clears the node of a folder that need not be polled any more.
void PolledFolders::poll(Folder& folder)
{
    const bool isKnown = tree.isCurrent(folder.node);
    const bool isLast = !isKnown || isWatchedNow(folder);
    if (isKnown && tree.isCurrent(folder.node))
        list(folder, false);
    if (isLast)
        folder.node.id = noNode;
}

bool PolledFolders::isWatchedNow(Folder& folder)
{
    NodeId node = folder.node.id;
    switch (installer.install(node)) {
    case WatchResult::Gone:
        // RootTracker handles the roots.
        if (tree.isRoot(node))
            return false;
        tree.remove(node);
        return true;
    case WatchResult::Fresh:
    case WatchResult::Same:
        return folder.reason == PollReason::NoWatch;
    case WatchResult::Replaced:
        queue.add(node, ScanReason::Check, folder.modified);
        return folder.reason == PollReason::NoWatch;
    default:
        return false;
    }
}

void PolledFolders::list(Folder& folder, bool isFirst)
{
    if (!tree.path(folder.node.id, WatchTree::Spelling::Resolved, path))
        return;
    const FileTime now = wallClock();
    const FileDescriptor descriptor = openFolder(path, O_RDONLY);
    const std::optional<FileStatus> self = descriptor ? fileStatus(path) : std::nullopt;
    if (!self)
        return;
    const LastPoll lastPoll = lastPollOf(folder, self->modified);
    std::vector<Item> items;
    DirectoryReader reader(descriptor.get(), buffer);
    while (const std::optional<DirectoryEntry> entry = reader.next()) {
        const std::optional<FileStatus> status = fileStatus(descriptor.get(), entry->name);
        if (!status)
            continue;
        const std::string name = entry->name;
        items.push_back(itemOf(name, *status));
        if (!isFirst)
            compare(folder, name, *status, lastPoll);
    }
    if (!isFirst)
        detachMissing(folder.node.id);
    std::ranges::sort(items, {}, &Item::name);
    folder.items = std::move(items);
    folder.modified = self->modified;
    folder.polledAt = now;
}

PolledFolders::Item PolledFolders::itemOf(const std::string& name, const FileStatus& status)
{
    return { std::hash<std::string> {}(name), status.modified, spread(status.size),
        spread(status.inode) };
}

/// If the folder's modification time has changed, it was set after the last poll, by the clock of
/// the drive. Subtracting the time elapsed since that poll gives a lower bound of the poll's time
/// by that clock. Some drives do not update the time for new names; then only our clock is left.
PolledFolders::LastPoll PolledFolders::lastPollOf(const Folder& folder, FileTime modifiedNow)
{
    const FileTime byOurs = folder.polledAt - clockGrain;
    const FileTime byTheirs = std::min(modifiedNow - (wallClock() - byOurs), byOurs);
    if (modifiedNow != folder.modified)
        return { byTheirs, byTheirs };
    return { byTheirs, std::max(byTheirs, byOurs - maxClockError) };
}

void PolledFolders::compare(
    const Folder& folder, const std::string& name, const FileStatus& status, LastPoll lastPoll)
{
    if (status.kind() == FileEventFlag::ItemIsDir)
        return handleSubfolder(folder, name, status, lastPoll.forNames);
    const Item item = itemOf(name, status);
    const auto found = std::ranges::lower_bound(folder.items, item.name, {}, &Item::name);
    const bool isKnown = found != folder.items.end() && found->name == item.name;
    const std::uint32_t flags = whatHappened(isKnown ? &*found : nullptr, item, status, lastPoll);
    if (flags != 0)
        reporter.report(folder.node.id, name, flags | status.kind(), EventCoalescer::More::Unsaid);
}

std::uint32_t PolledFolders::whatHappened(
    const Item* former, const Item& item, const FileStatus& status, LastPoll lastPoll)
{
    const bool isSame = former != nullptr && item.inode == former->inode;
    const bool hasNewSize = former != nullptr && item.size != former->size;
    if (former != nullptr && !hasNewSize && item.modified == former->modified)
        return 0;
    if (isSame && !hasNewSize) {
        const bool isDated = item.modified < former->modified || status.isTouched()
            || !status.isModifiedSince(lastPoll.forContent);
        return isDated ? 0 : FileEventFlag::ItemModified;
    }
    if (isSame && item.modified >= former->modified)
        return FileEventFlag::ItemModified;
    if (!status.isModifiedSince(lastPoll.forNames))
        return FileEventFlag::ItemRenamed;
    return former != nullptr ? FileEventFlag::ItemModified : FileEventFlag::ItemCreated;
}

void PolledFolders::handleSubfolder(
    const Folder& folder, const std::string& name, const FileStatus& status, FileTime lastPoll)
{
    NodeId child = tree.child(folder.node.id, name);
    if (child == noNode) {
        child = tree.add(folder.node.id, name);
        reporter.report(child, FileEventFlag::ItemCreated | FileEventFlag::ItemIsDir);
        queue.add(child, ScanReason::Arrived, arrivalTime(status, lastPoll));
    }
    tree.setSeen(child, true);
}

void PolledFolders::detachMissing(NodeId node)
{
    NodeId next = noNode;
    for (NodeId child = tree.firstChild(node); child != noNode; child = next) {
        next = tree.nextSibling(child);
        if (tree.isSeen(child))
            tree.setSeen(child, false);
        else if (const auto formerPath = reporter.path(node, tree.name(child)))
            pendingRenames.detach(child, 0, *formerPath);
    }
}

} // namespace stemvault::file_events
