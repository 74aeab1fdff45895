#include "LinuxDesktop/FileEvents/PathWatcher.h"

#include "FileManager/DirectoryAccess.h"
#include "Platform/FileEvents.h"

#include <algorithm>
#include <cerrno>
#include <deque>
#include <sys/inotify.h>
#include <utility>

namespace stemvault::file_events {

namespace {

constexpr std::uint32_t selfMask = IN_MOVE_SELF | IN_DELETE_SELF | IN_MASK_ADD;
constexpr std::uint32_t nameMask =
    IN_CREATE | IN_DELETE | IN_MOVED_FROM | IN_MOVED_TO | IN_ATTRIB | IN_ONLYDIR;
constexpr int maxLinks = 40;

/// Puts the parts of a path in front of the parts still to be followed.
void putInFront(std::deque<std::string>& parts, const std::string& path)
{
    std::size_t end = path.size();
    while (end > 0) {
        const std::size_t slash = path.rfind('/', end - 1);
        const std::size_t start = slash == std::string::npos ? 0 : slash + 1;
        if (end > start)
            parts.push_front(path.substr(start, end - start));
        end = slash == std::string::npos ? 0 : slash;
    }
}

std::string parentOf(const std::string& path)
{
    return path.substr(0, std::min(path.rfind('/'), path.size()));
}

} // namespace

void PathWatcher::begin()
{
    former = std::exchange(watches, {});
    complete = inotify.isOpen();
}

void PathWatcher::end()
{
    for (const auto& [watch, names] : former)
        if (!watches.contains(watch))
            inotify.retire(watch);
    former.clear();
}

PathWatcher::Target PathWatcher::follow(const std::string& absolutePath)
{
    std::deque<std::string> parts;
    putInFront(parts, absolutePath);
    std::string here;
    int links = 0;
    while (!parts.empty()) {
        const std::string part = std::exchange(parts.front(), {});
        parts.pop_front();
        if (part == "." || part == "..") {
            here = part == "." ? here : parentOf(here);
            continue;
        }
        std::string next = here;
        next.append("/").append(part);
        // Watch before reading the status, so that no change in between is missed.
        if (parts.empty() || !watch(next, selfMask, {}))
            watchNames(here, part);
        const std::optional<FileStatus> status = fileStatus(next);
        if (status && status->kind() == FileEventFlag::ItemIsSymlink && ++links <= maxLinks) {
            watch(next, selfMask, {});
            const std::string target = linkTarget(AT_FDCWD, next).value_or("");
            here = target.starts_with('/') ? std::string() : here;
            putInFront(parts, target);
        } else if (status && status->kind() == FileEventFlag::ItemIsDir) {
            here = next;
        } else {
            watchNames(here, part);
            return { {}, std::nullopt, next };
        }
    }
    return { here, fileStatus(here), {} };
}

bool PathWatcher::isAffectedBy(const InotifyEvent& event)
{
    const auto found = watches.find(event.watch);
    if (found == watches.end())
        return false;
    const Names& names = found->second;
    const bool isAffected = event.has(IN_MOVE_SELF | IN_DELETE_SELF | IN_UNMOUNT | IN_IGNORED)
        || std::ranges::find(names, event.name) != names.end();
    if (event.has(IN_IGNORED))
        watches.erase(found);
    return isAffected;
}

bool PathWatcher::watch(const std::string& path, std::uint32_t mask, const std::string& name)
{
    const int watch = inotify.watch(path, mask);
    if (watch < 0) {
        complete = complete && watch != -ENOSPC && watch != -EMFILE && watch != -ENOMEM;
        return false;
    }
    Names& names = watches[watch];
    if (!name.empty())
        names.push_back(name);
    return true;
}

void PathWatcher::watchNames(const std::string& folder, const std::string& name)
{
    watch(folder, nameMask | selfMask, name);
}

} // namespace stemvault::file_events
