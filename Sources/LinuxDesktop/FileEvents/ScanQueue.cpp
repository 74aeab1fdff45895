#include "LinuxDesktop/FileEvents/ScanQueue.h"

namespace stemvault::file_events {

namespace {

constexpr int maxMisses = 3;

} // namespace

void ScanQueue::add(NodeId node, ScanReason reason, FileTime since)
{
    scans.push_back({ tree.ref(node), reason, since });
}

bool ScanQueue::retry(Scan scan)
{
    if (++scan.misses >= maxMisses)
        return false;
    missed.push_back(scan);
    return true;
}

void ScanQueue::addUnreadable(NodeId node, FileTime since)
{
    unreadable.emplace_back(tree.ref(node), since);
}

void ScanQueue::retryUnreadable(NodeId parent)
{
    for (const auto& [node, since] : std::exchange(unreadable, {})) {
        if (!tree.isCurrent(node))
            continue;
        if (node.id == parent || tree.parent(node.id) == parent)
            add(node.id, ScanReason::Arrived, since);
        else
            unreadable.emplace_back(node, since);
    }
}

bool ScanQueue::resume()
{
    if (shapeWithoutPath != tree.shape())
        for (const Scan& scan : std::exchange(withoutPath, {}))
            scans.push_back(scan);
    for (const Scan& scan : std::exchange(missed, {}))
        scans.push_back(scan);
    return !scans.empty();
}

std::optional<Scan> ScanQueue::next()
{
    while (!scans.empty()) {
        const Scan scan = scans.back();
        scans.pop_back();
        if (!tree.isCurrent(scan.node))
            continue;
        if (tree.path(scan.node.id, WatchTree::Spelling::Resolved, path))
            return scan;
        withoutPath.push_back(scan);
        shapeWithoutPath = tree.shape();
    }
    return std::nullopt;
}

void ScanQueue::pause()
{
    if (!isIdle())
        return;
    scans.shrink_to_fit();
    lostSince.reset();
}

} // namespace stemvault::file_events
