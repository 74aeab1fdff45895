#include "LinuxDesktop/FileEvents/EventReporter.h"

#include <utility>

namespace stemvault::file_events {

void EventReporter::report(NodeId folder, std::string_view name, std::uint32_t flags, More more)
{
    if (isLast(folder, name))
        return coalescer.addTo(lastEntry, flags, more);
    if (!tree.path(folder, WatchTree::Spelling::Given, text)) {
        deferred.push_back({ tree.ref(folder), std::string(name), flags, more });
        return;
    }
    if (!name.empty())
        text.append("/").append(name);
    lastEntry = add(text, flags, more);
    lastFolder = folder;
    lastShape = tree.shape();
    lastName = name;
}

void EventReporter::report(NodeId folder, std::uint32_t flags)
{
    report(folder, {}, flags, More::Unsaid);
}

void EventReporter::report(std::string_view path, std::uint32_t flags)
{
    static_cast<void>(add(path, flags, More::Unsaid));
}

std::uint32_t EventReporter::flagsOf(NodeId folder, std::string_view name)
{
    if (isLast(folder, name))
        return coalescer.flagsOf(lastEntry);
    const std::optional<std::string> itemPath = path(folder, name);
    return itemPath ? coalescer.flagsOf(*itemPath) : 0;
}

std::optional<std::string> EventReporter::path(NodeId folder, std::string_view name)
{
    return tree.itemPath(folder, name, WatchTree::Spelling::Given);
}

void EventReporter::retryDeferred()
{
    for (const Deferred& event : std::exchange(deferred, {}))
        if (tree.isCurrent(event.folder))
            report(event.folder.id, event.name, event.flags, event.more);
}

std::size_t EventReporter::add(std::string_view path, std::uint32_t flags, More more)
{
    return coalescer.add(path.empty() ? "/" : path, flags, more, std::chrono::steady_clock::now());
}

} // namespace stemvault::file_events
