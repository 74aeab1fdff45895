#include "LinuxDesktop/Workspace/ApplicationList.h"

#include <algorithm>
#include <optional>
#include <set>
#include <utility>

namespace stemvault::workspace {

namespace {

class Listing {
public:
    Listing(const std::map<pid_t, Process>& all, const std::map<ProcessKey, WindowClass>& mapped,
        const DesktopEntries& menu)
        : processes(all), windows(mapped), entries(menu)
    {
        for (const auto& [number, process] : processes) {
            if (process.unit && !process.isHelper)
                noteUnit(process);
            if (process.winePrefix && isWineServer(process.program))
                wineServers.insert_or_assign(*process.winePrefix, number);
            if (process.unit && process.known)
                unitsOfKnown.insert(process.unit->unit);
        }
    }

    [[nodiscard]] std::optional<ListedApplication> application(const Process& process) const
    {
        if (process.known)
            return described(
                process, isTopmost(process), process.known->identifier, process.known->name);
        if (process.isHelper)
            return std::nullopt;
        if (const auto known = knownByEntry(process))
            return described(process, true, known->identifier,
                known->name.empty() ? process.program.name : known->name);
        if (const auto window = windows.find(process.key); window != windows.end())
            return withWindow(process, window->second);
        if (isFirstOfUnit(process))
            return inUnit(process);
        return std::nullopt;
    }

private:
    using Found = DesktopEntries::Found;

    /// The main process of a unit is the one that was started first. The others descend from it,
    /// even if it is no longer their parent.
    void noteUnit(const Process& process)
    {
        const auto [first, isNew] = firstOfUnit.emplace(process.unit->unit, process.key);
        if (!isNew)
            first->second = std::min(first->second, process.key);
    }

    [[nodiscard]] bool isFirstOfUnit(const Process& process) const
    {
        return process.unit && !process.isHelper
            && firstOfUnit.at(process.unit->unit) == process.key;
    }

    [[nodiscard]] bool isTopmost(const Process& process) const
    {
        const Process* child = &process;
        for (;;) {
            const auto parent = processes.find(child->parent);
            // A parent is older than its child; otherwise its number has been reused.
            if (parent == processes.end() || !(parent->second.key < child->key))
                return true;
            if (parent->second.known && parent->second.program.name == process.program.name)
                return false;
            child = &parent->second;
        }
    }

    /// Recognises a DAW whose program has been renamed by the user, by its desktop entry.
    [[nodiscard]] std::optional<KnownApplication> knownByEntry(const Process& process) const
    {
        // If a DAW's own process is in the unit, the first one is the script that started the DAW.
        if (process.unit && unitsOfKnown.contains(process.unit->unit))
            return std::nullopt;
        if (isFirstOfUnit(process))
            if (auto known = knownApplicationOfEntry(process.unit->identifier))
                return known;
        if (process.sandboxIdentifier)
            return knownApplicationOfEntry(*process.sandboxIdentifier);
        const auto window = windows.find(process.key);
        if (window == windows.end())
            return std::nullopt;
        return knownApplicationOfEntry(entryOf(process, &window->second).identifier);
    }

    /// The unit is only a hint, because a program started in a terminal is in the terminal's unit.
    /// So only a unit's first process is identified by it.
    [[nodiscard]] Found entryOf(const Process& process, const WindowClass* window) const
    {
        Found found;
        if (isFirstOfUnit(process))
            found = entries.byIdentifier(process.unit->identifier);
        if (!found && process.sandboxIdentifier)
            found = entries.byIdentifier(*process.sandboxIdentifier);
        if (!found && window != nullptr)
            found = entries.byWindowClass(window->instance, window->className);
        if (!found)
            found = entries.byProgram(process.program.name);
        return found;
    }

    [[nodiscard]] ListedApplication withWindow(
        const Process& process, const WindowClass& window) const
    {
        if (const auto found = entryOf(process, &window))
            return described(process, true, found.identifier, found.entry->name);
        const auto identifier = process.sandboxIdentifier.value_or(window.className);
        return described(process, true, identifier, process.program.name);
    }

    [[nodiscard]] ListedApplication inUnit(const Process& process) const
    {
        const auto found = entries.byIdentifier(process.unit->identifier);
        const bool isRegular = found && found.entry->isInMenu && !found.entry->runsInTerminal
            && !process.unit->isAutostart;
        return described(process, isRegular, process.unit->identifier,
            found ? found.entry->name : process.program.name);
    }

    [[nodiscard]] ListedApplication described(const Process& process, bool isRegular,
        const std::string& identifier, const std::string& name) const
    {
        ListedApplication application { process.key, {} };
        RunningApplication& description = application.description;
        if (!identifier.empty())
            description.bundleIdentifier = identifier;
        if (!name.empty())
            description.localizedName = name;
        description.activationPolicy =
            isRegular ? ActivationPolicy::Regular : ActivationPolicy::Prohibited;
        description.processIdentifier = process.key.process;
        if (process.winePrefix)
            if (const auto server = wineServers.find(*process.winePrefix);
                server != wineServers.end())
                description.fileServerIdentifier = server->second;
        return application;
    }

    const std::map<pid_t, Process>& processes;
    const std::map<ProcessKey, WindowClass>& windows;
    const DesktopEntries& entries;
    std::map<std::string, ProcessKey, std::less<>> firstOfUnit;
    std::map<std::string, pid_t, std::less<>> wineServers; ///< By the Wine prefix that each serves.
    std::set<std::string, std::less<>> unitsOfKnown; ///< Units in which a DAW's own process runs.
};

} // namespace

std::vector<ListedApplication> listApplications(const std::map<pid_t, Process>& processes,
    const std::map<ProcessKey, WindowClass>& windows, const DesktopEntries& entries)
{
    const Listing listing(processes, windows, entries);
    std::vector<ListedApplication> applications;
    for (const auto& [number, process] : processes)
        if (auto application = listing.application(process))
            applications.push_back(*std::move(application));
    std::ranges::sort(applications, {}, &ListedApplication::key);
    return applications;
}

} // namespace stemvault::workspace
