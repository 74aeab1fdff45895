#include "LinuxDesktop/FileEvents/WriteDetector.h"

#include "Platform/FileEvents.h"

#include <chrono>

namespace stemvault::file_events {

using namespace FileEventFlag;
using More = EventCoalescer::More;

void WriteDetector::modified(NodeId folder, std::string_view name)
{
    if (reporter.flagsOf(folder, name) == 0 && isOnlyDated(folder, name)) {
        writes.account(file(folder, name), clock.readAt);
        return;
    }
    writes.noteWrite(file(folder, name));
    reporter.report(folder, name, ItemModified | ItemIsFile, More::Unsaid);
}

/// A closed file counts as written if it
/// - was written since it was last closed, under this name or under another one in a watched
/// folder;
/// - or was written through a mapping, which raises no other event.
/// IN_CLOSE_WRITE is also raised for a file that was opened for writing but not written.
void WriteDetector::closed(NodeId folder, std::string_view name)
{
    const std::uint32_t flags = reporter.flagsOf(folder, name);
    const bool isWritten = writes.takeWrite(file(folder, name))
        || (flags & (ItemCreated | ItemModified)) != 0 || isWrittenUnnoticed(folder, name);
    writes.account(file(folder, name), clock.readAt);
    if (isWritten)
        reporter.report(folder, name, ItemModified | ItemIsFile, More::Done);
}

void WriteDetector::attributesChanged(NodeId folder, std::string_view name)
{
    writes.account(file(folder, name), clock.readAt);
}

bool WriteDetector::nameLost(NodeId folder, std::string_view name)
{
    return writes.takeWrite(file(folder, name));
}

void WriteDetector::nameGained(NodeId folder, std::string_view name, bool isBeingWritten)
{
    // The file that had this name before was replaced, so its unclosed write no longer counts.
    writes.takeWrite(file(folder, name));
    if (isBeingWritten)
        writes.noteWrite(file(folder, name));
    else
        writes.account(file(folder, name), clock.readAt);
}

/// Setting only the modification time raises the same event as a write. If that time is older than
/// both the event and the file's change time, it was set explicitly.
bool WriteDetector::isOnlyDated(NodeId folder, std::string_view name) const
{
    const auto status = itemStatus(tree, folder, name);
    return status && status->changed - status->modified > std::chrono::seconds(2)
        && status->modified < clock.watchedUntil;
}

/// After a write, the modification time and the change time of a file are equal. After a rename or
/// an explicitly set date they differ, unless it happened in the same clock tick as the write. In
/// that case, the event of the rename or the date accounts for the time.
bool WriteDetector::isWrittenUnnoticed(NodeId folder, std::string_view name) const
{
    const auto status = itemStatus(tree, folder, name);
    return status && status->modified == status->changed && status->isModifiedSince(clock.began)
        && status->modified > writes.accountedUntil(file(folder, name));
}

std::optional<FileStatus> itemStatus(const WatchTree& tree, NodeId folder, std::string_view name)
{
    const auto path = tree.itemPath(folder, name, WatchTree::Spelling::Resolved);
    return path ? fileStatus(*path) : std::nullopt;
}

} // namespace stemvault::file_events
