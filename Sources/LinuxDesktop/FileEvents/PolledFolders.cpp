#include "LinuxDesktop/FileEvents/PolledFolders.h"

#include "LinuxDesktop/FileEvents/DirectoryReader.h"
#include "LinuxDesktop/FileEvents/TreeWalker.h"

#include <algorithm>
#include <fcntl.h>
#include <functional>
#include <string>

namespace stemvault {

namespace {

constexpr std::chrono::milliseconds longestLook { 50 };

std::uint64_t signatureOf(const FileStatus& status)
{
    std::uint64_t signature = status.inode;
    for (const std::uint64_t part :
        { status.size, static_cast<std::uint64_t>(status.modified.time_since_epoch().count()),
            static_cast<std::uint64_t>(status.changed.time_since_epoch().count()) })
        signature = (signature ^ part) * 0x9E3779B97F4A7C15U;
    return signature;
}

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
    folder = { state.tree.ref(node), reason, {}, {} };
    read(folder, true);
    if (!nextLook)
        nextLook = std::chrono::steady_clock::now() + state.lookInterval;
}

std::optional<EventWindow::Time> PolledFolders::due() const
{
    return folders.empty() ? std::nullopt : nextLook;
}

void PolledFolders::look(EventWindow::Time now)
{
    const auto end = now + longestLook;
    auto folder = folders.lower_bound(nextInTurn);
    for (std::size_t left = folders.size(); left > 0 && !state.mustEnd; --left) {
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
        : std::optional(std::chrono::steady_clock::now() + state.lookInterval);
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
    switch (walker.placer().place(node)) {
    case Placement::Gone:
        // Whether a root is gone is for others to say.
        if (state.tree.isRoot(node))
            return false;
        state.remove(node);
        return true;
    case Placement::Fresh:
    case Placement::Same:
        return folder.reason == Reason::NoWatch;
    case Placement::Replaced:
        walker.enqueue(node, TreeWalker::Visit::Check, folder.modified);
        return folder.reason == Reason::NoWatch;
    default:
        return false;
    }
}

bool PolledFolders::read(Folder& folder, bool isFirst)
{
    if (!state.tree.path(folder.node.id, WatchTree::Spelling::Resolved, path))
        return false;
    const FileDescriptor descriptor = openFolder(path, O_RDONLY);
    const std::optional<FileStatus> self = descriptor ? fileStatus(path) : std::nullopt;
    if (!self)
        return false;
    Items items;
    DirectoryReader reader(descriptor.get(), buffer);
    while (const std::optional<DirectoryEntry> entry = reader.next()) {
        const std::optional<FileStatus> status = fileStatus(descriptor.get(), entry->name);
        if (!status)
            continue;
        const std::string name = entry->name;
        const std::uint64_t signature = signatureOf(*status);
        items.emplace_back(std::hash<std::string> {}(name), signature);
        if (!isFirst)
            compare(folder, name, *status, signature, folder.items);
    }
    if (!isFirst)
        departUnseen(folder.node.id);
    std::sort(items.begin(), items.end());
    folder.items = std::move(items);
    folder.modified = self->modified;
    return true;
}

void PolledFolders::compare(const Folder& folder, const std::string& name, const FileStatus& status,
    std::uint64_t signature, const Items& items)
{
    if (status.kind() == FileEventFlag::ItemIsDir)
        return meetFolder(folder, name, status);
    const std::uint64_t hash = std::hash<std::string> {}(name);
    const auto known = std::lower_bound(items.begin(), items.end(), std::pair(hash, 0UL));
    const bool isKnown = known != items.end() && known->first == hash;
    if (isKnown && known->second == signature)
        return;
    const std::uint32_t what = isKnown ? FileEventFlag::ItemModified : FileEventFlag::ItemCreated;
    state.reporter.report(folder.node.id, name, what | status.kind(), EventWindow::More::Unsaid);
}

void PolledFolders::meetFolder(
    const Folder& folder, const std::string& name, const FileStatus& status)
{
    NodeId child = state.tree.child(folder.node.id, name);
    if (child == noNode) {
        child = state.tree.add(folder.node.id, name);
        state.reporter.report(child, FileEventFlag::ItemCreated | FileEventFlag::ItemIsDir);
        walker.enqueue(child, TreeWalker::Visit::Arrived, arrivalTime(status, folder.modified));
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
