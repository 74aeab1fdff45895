#include "LinuxDesktop/FileEvents/PolledFolders.h"

#include "LinuxDesktop/FileEvents/DirectoryReader.h"
#include "LinuxDesktop/FileEvents/TreeWalker.h"

#include <algorithm>
#include <fcntl.h>
#include <functional>
#include <string>

namespace stemvault {

namespace {

constexpr std::chrono::milliseconds maxPollDuration { 50 };

/// How far another computer's clock may be off where its folders do not tell the time.
constexpr std::chrono::minutes maxClockError { 1 };

} // namespace

PolledFolders::PolledFolders(WatchState& shared, TreeWalker& treeWalker)
    : state(shared), walker(treeWalker), buffer(32UL * 1024)
{
}

void PolledFolders::add(NodeId node, Reason reason)
{
    Folder& folder = folders[node];
    if (folder.node.id == node && state.tree.isCurrent(folder.node))
        return;
    folder = { state.tree.ref(node), reason, {}, {}, {} };
    read(folder, true);
    if (!nextLook)
        nextLook = std::chrono::steady_clock::now() + state.pollInterval;
}

bool PolledFolders::isSharedWithOthers(NodeId node) const
{
    const auto folder = folders.find(node);
    return folder != folders.end() && folder->second.reason == Reason::SharedWithOthers;
}

std::optional<EventCoalescer::Time> PolledFolders::due() const
{
    return folders.empty() ? std::nullopt : nextLook;
}

void PolledFolders::look(EventCoalescer::Time now)
{
    const auto end = now + maxPollDuration;
    auto folder = folders.lower_bound(nextInTurn);
    for (std::size_t left = folders.size(); left > 0 && !state.isStopping; --left) {
        if (folder == folders.end())
            folder = folders.begin();
        lookAt(folder->second);
        folder = folder->second.node.id == noNode ? folders.erase(folder) : std::next(folder);
        if (std::chrono::steady_clock::now() > end)
            break;
    }
    nextInTurn = folder == folders.end() ? 0 : folder->first;
    nextLook = folders.empty()
        ? std::nullopt
        : std::optional(std::chrono::steady_clock::now() + state.pollInterval);
}

/// A folder that needs no further look loses its node.
void PolledFolders::lookAt(Folder& folder)
{
    const bool isKnown = state.tree.isCurrent(folder.node);
    const bool isLast = !isKnown || isWatchedNow(folder);
    if (isKnown && state.tree.isCurrent(folder.node))
        read(folder, false);
    if (isLast)
        folder.node.id = noNode;
}

bool PolledFolders::isWatchedNow(Folder& folder)
{
    NodeId node = folder.node.id;
    switch (walker.installer().place(node)) {
    case WatchResult::Gone:
        // Whether a root is gone is for others to say.
        if (state.tree.isRoot(node))
            return false;
        state.remove(node);
        return true;
    case WatchResult::Fresh:
    case WatchResult::Same:
        return folder.reason == Reason::NoWatch;
    case WatchResult::Replaced:
        walker.enqueue(node, TreeWalker::Visit::Check, folder.modified);
        return folder.reason == Reason::NoWatch;
    default:
        return false;
    }
}

void PolledFolders::read(Folder& folder, bool isFirst)
{
    if (!state.tree.path(folder.node.id, WatchTree::Spelling::Resolved, path))
        return;
    const FileTime now = wallClock();
    const FileDescriptor descriptor = openFolder(path, O_RDONLY);
    const std::optional<FileStatus> self = descriptor ? fileStatus(path) : std::nullopt;
    if (!self)
        return;
    const LastLook lastLook = lastLookAt(folder, self->modified);
    std::vector<Item> items;
    DirectoryReader reader(descriptor.get(), buffer);
    while (const std::optional<DirectoryEntry> entry = reader.next()) {
        const std::optional<FileStatus> status = fileStatus(descriptor.get(), entry->name);
        if (!status)
            continue;
        const std::string name = entry->name;
        items.push_back(itemOf(name, *status));
        if (!isFirst)
            compare(folder, name, *status, lastLook);
    }
    if (!isFirst)
        departUnseen(folder.node.id);
    std::ranges::sort(items, {}, &Item::name);
    folder.items = std::move(items);
    folder.modified = self->modified;
    folder.lookedAt = now;
}

PolledFolders::Item PolledFolders::itemOf(const std::string& name, const FileStatus& status)
{
    return { std::hash<std::string> {}(name), status.modified, spread(status.size),
        spread(status.inode) };
}

/// A name that comes sets the folder's own time by the clock of the drive, and comes after the last
/// look. Some drives do not keep the time of a folder, and then only our own clock is left.
PolledFolders::LastLook PolledFolders::lastLookAt(const Folder& folder, FileTime modifiedNow)
{
    const FileTime byOurs = folder.lookedAt - clockGrain;
    const FileTime byTheirs = std::min(modifiedNow - (wallClock() - byOurs), byOurs);
    if (modifiedNow != folder.modified)
        return { byTheirs, byTheirs };
    return { byTheirs, std::max(byTheirs, byOurs - maxClockError) };
}

void PolledFolders::compare(
    const Folder& folder, const std::string& name, const FileStatus& status, LastLook lastLook)
{
    if (status.kind() == FileEventFlag::ItemIsDir)
        return meetFolder(folder, name, status, lastLook.forNames);
    const Item item = itemOf(name, status);
    const auto found = std::ranges::lower_bound(folder.items, item.name, {}, &Item::name);
    const bool isKnown = found != folder.items.end() && found->name == item.name;
    const std::uint32_t flags = whatHappened(isKnown ? &*found : nullptr, item, status, lastLook);
    if (flags != 0)
        state.reporter.report(
            folder.node.id, name, flags | status.kind(), EventCoalescer::More::Unsaid);
}

std::uint32_t PolledFolders::whatHappened(
    const Item* former, const Item& item, const FileStatus& status, LastLook lastLook)
{
    const bool isSame = former != nullptr && item.inode == former->inode;
    const bool hasNewSize = former != nullptr && item.size != former->size;
    if (former != nullptr && !hasNewSize && item.modified == former->modified)
        return 0;
    if (isSame && !hasNewSize) {
        const bool isDated = item.modified < former->modified || status.isTouched()
            || !status.isModifiedSince(lastLook.forContent);
        return isDated ? 0 : FileEventFlag::ItemModified;
    }
    if (isSame && item.modified >= former->modified)
        return FileEventFlag::ItemModified;
    if (!status.isModifiedSince(lastLook.forNames))
        return FileEventFlag::ItemRenamed;
    return former != nullptr ? FileEventFlag::ItemModified : FileEventFlag::ItemCreated;
}

void PolledFolders::meetFolder(
    const Folder& folder, const std::string& name, const FileStatus& status, FileTime lastLook)
{
    NodeId child = state.tree.child(folder.node.id, name);
    if (child == noNode) {
        child = state.tree.add(folder.node.id, name);
        state.reporter.report(child, FileEventFlag::ItemCreated | FileEventFlag::ItemIsDir);
        walker.enqueue(child, TreeWalker::Visit::Arrived, arrivalTime(status, lastLook));
    }
    state.tree.setSeen(child, true);
}

void PolledFolders::departUnseen(NodeId node)
{
    NodeId next = noNode;
    for (NodeId child = state.tree.firstChild(node); child != noNode; child = next) {
        next = state.tree.nextSibling(child);
        if (state.tree.isSeen(child))
            state.tree.setSeen(child, false);
        else if (const auto formerPath = state.reporter.path(node, state.tree.name(child)))
            state.depart(child, 0, *formerPath);
    }
}

} // namespace stemvault
