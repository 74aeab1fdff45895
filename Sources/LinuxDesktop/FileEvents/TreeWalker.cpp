#include "LinuxDesktop/FileEvents/TreeWalker.h"

#include "LinuxDesktop/FileEvents/FileSystemTraits.h"

#include <algorithm>
#include <cerrno>
#include <dirent.h>
#include <fcntl.h>
#include <utility>

namespace stemvault {

namespace {

constexpr std::chrono::milliseconds sliceLength { 4 };
constexpr int maxMisses = 3;

bool isOutOfDescriptors(int error)
{
    return error == EMFILE || error == ENFILE || error == ENOMEM;
}

} // namespace

TreeWalker::TreeWalker(WatchState& shared)
    : state(shared), buffer(32UL * 1024), polledFolders(shared, *this)
{
}

void TreeWalker::enqueue(NodeId node, Visit visit, FileTime since)
{
    jobs.push_back({ state.tree.ref(node), visit, since });
}

bool TreeWalker::runSlice()
{
    visitVacated(Visit::Arrived, state.arrivalBound);
    if (shapeWhenPostponed != state.tree.shape())
        for (const Job& job : std::exchange(postponed, {}))
            jobs.push_back(job);
    for (const Job& job : std::exchange(missed, {}))
        jobs.push_back(job);
    if (jobs.empty())
        return false;
    const auto end = std::chrono::steady_clock::now() + sliceLength;
    while (!jobs.empty() && !state.isStopping && std::chrono::steady_clock::now() < end) {
        const Job job = jobs.back();
        jobs.pop_back();
        if (!state.tree.isCurrent(job.node))
            continue;
        if (state.tree.path(job.node.id, WatchTree::Spelling::Resolved, path))
            visit(job);
        else
            postpone(job);
    }
    if (isIdle()) {
        jobs.shrink_to_fit();
        lostSince.reset();
    }
    return true;
}

void TreeWalker::postpone(const Job& job)
{
    postponed.push_back(job);
    shapeWhenPostponed = state.tree.shape();
}

/// A folder may be renamed, by itself or with one above it, while it is looked up. The events that
/// were read before the next slice tell of it.
bool TreeWalker::tryAgain(Job job)
{
    const bool mayHaveMoved = ++job.misses < maxMisses;
    if (mayHaveMoved)
        missed.push_back(job);
    return mayHaveMoved;
}

void TreeWalker::visitVacated(Visit visit, FileTime since)
{
    for (const NodeRef& node : std::exchange(state.vacated, {}))
        if (state.tree.isCurrent(node))
            enqueue(node.id, visit, since);
}

void TreeWalker::visit(Job job)
{
    NodeId node = job.node.id;
    const WatchResult result = watchInstaller.place(node);
    visitVacated(job.visit, job.since);
    if (result != WatchResult::Same)
        job.since = state.pendingRenames.sinceNeverWatched(job.since);
    switch (result) {
    case WatchResult::Fresh:
        return visitFolder(node, job);
    case WatchResult::Same:
        // Its events tell all about a known folder, unless they are lost.
        if (job.visit != Visit::Check && lostSince && node != job.node.id)
            job = { job.node, Visit::Check, *lostSince };
        return job.visit == Visit::Check || job.isListDue ? visitFolder(node, job) : void();
    case WatchResult::Replaced:
        state.reporter.report(node, FileEventFlag::MustScanSubDirs | FileEventFlag::ItemIsDir);
        job.visit = Visit::Arrived;
        return visitFolder(node, job);
    case WatchResult::Unwatched:
        polledFolders.add(node, PolledFolders::Reason::NoWatch);
        return visitFolder(node, job);
    case WatchResult::Unreadable:
        unreadable.emplace_back(state.tree.ref(node), job.since);
        break;
    case WatchResult::Gone:
        return leave(node, job);
    case WatchResult::Loop:
        break;
    }
}

void TreeWalker::visitFolder(NodeId node, Job job)
{
    if (!state.tree.path(node, WatchTree::Spelling::Resolved, path))
        return;
    job.node = state.tree.ref(node);
    job.isListDue = true;
    const std::optional<FileStatus> status = fileStatus(path);
    if (!status)
        return (void)tryAgain(job);
    const Device traits = device(status->device);
    if (traits.isShared)
        polledFolders.add(node, PolledFolders::Reason::SharedWithOthers);
    // Timestamps of a shared drive come from its own clock, which the folder tells.
    if (traits.isShared && job.visit == Visit::Created)
        job.since = std::min(job.since, status->modified - (wallClock() - job.since));
    if (job.visit != Visit::Start)
        return list(node, job, true);
    // New names show in the folder's own time, which spares a look at every file.
    const bool hasNewNames = status->modified >= job.since;
    if (hasNewNames || !traits.countsFolders || status->links != 2)
        list(node, job, hasNewNames);
}

void TreeWalker::retryUnreadable(NodeId parent)
{
    for (const auto& [node, since] : std::exchange(unreadable, {})) {
        if (!state.tree.isCurrent(node))
            continue;
        if (node.id == parent || state.tree.parent(node.id) == parent)
            enqueue(node.id, Visit::Arrived, since);
        else
            unreadable.emplace_back(node, since);
    }
}

void TreeWalker::list(NodeId node, const Job& job, bool areItemsReported)
{
    const FileDescriptor folder = openFolder(path, O_RDONLY);
    if (!folder && isOutOfDescriptors(errno))
        return polledFolders.add(node, PolledFolders::Reason::NoWatch);
    if (!folder)
        return (void)tryAgain(job);
    DirectoryReader reader(folder.get(), buffer);
    while (const std::optional<DirectoryEntry> entry = reader.next()) {
        if (state.isStopping)
            return;
        meet(node, folder.get(), *entry, job, areItemsReported);
    }
    if (job.visit == Visit::Check)
        departUnseen(node);
}

void TreeWalker::meet(
    NodeId node, int folder, const DirectoryEntry& entry, const Job& job, bool isReported)
{
    std::uint32_t kind = kindOfEntry(entry.type);
    std::uint32_t flags = 0;
    if (entry.type == DT_UNKNOWN || isReported) {
        const std::optional<FileStatus> status = fileStatus(folder, entry.name);
        if (!status)
            return;
        kind = status->kind();
        flags = status->changesSince(job.since);
        // What is not reported now was written elsewhere, or before.
        if (kind == FileEventFlag::ItemIsFile && status->isModifiedSince(state.began))
            state.writes.account(
                RecentWrites::file(state.tree.ref(node), entry.name), status->modified);
    }
    if (kind == FileEventFlag::ItemIsDir)
        meetFolder(node, entry.name, flags, job);
    else if (isReported && flags != 0)
        state.reporter.report(node, entry.name, flags, EventCoalescer::More::Expected);
}

void TreeWalker::meetFolder(
    NodeId parent, std::string_view name, std::uint32_t flags, const Job& job)
{
    const NodeId known = state.tree.child(parent, name);
    if (known != noNode && job.visit == Visit::Check) {
        state.tree.setSeen(known, true);
        enqueue(known, Visit::Check, job.since);
    }
    if (known != noNode)
        return;
    const NodeId child = state.tree.add(parent, name);
    state.tree.setSeen(child, job.visit == Visit::Check);
    if (flags != 0)
        state.reporter.report(child, flags);
    enqueue(child, job.visit, job.since);
}

void TreeWalker::departUnseen(NodeId node)
{
    NodeId next = noNode;
    for (NodeId child = state.tree.firstChild(node); child != noNode; child = next) {
        next = state.tree.nextSibling(child);
        if (!state.tree.isSeen(child))
            state.depart(child, 0, {});
        else
            state.tree.setSeen(child, false);
    }
}

void TreeWalker::leave(NodeId node, const Job& job)
{
    if (state.tree.parent(node) == noNode)
        return;
    if (job.visit == Visit::Check)
        state.depart(node, 0, {});
    else if (!tryAgain(job))
        state.remove(node);
}

TreeWalker::Device TreeWalker::device(std::uint64_t number)
{
    const auto known = devices.find(number);
    if (known != devices.end())
        return known->second;
    const std::uint32_t type = state.calls.fileSystemType(path.c_str());
    return devices[number] = { isSharedWithOthers(type), countsFoldersByLinks(type) };
}

} // namespace stemvault
