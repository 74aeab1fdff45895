#include "LinuxDesktop/Workspace/DesktopEntries.h"

#include "Foundation/Environment.h"
#include "Foundation/PathText.h"
#include "Foundation/UnicodeText.h"
#include "LinuxDesktop/Workspace/ReadFile.h"

#include <algorithm>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace stemvault::workspace {

namespace {

namespace fs = std::filesystem;

constexpr std::string_view suffix = ".desktop";
constexpr std::size_t maxEntryBytes = std::size_t { 1 } << 20U;
constexpr int maxFolderLevels = 8; // Links may form a cycle.

std::string environment(const char* name, const std::string& otherwise)
{
    auto value = stemvault::environment(name);
    return value.empty() ? otherwise : value;
}

std::vector<std::string> splitAtColons(std::string_view list)
{
    std::vector<std::string> parts;
    while (!list.empty()) {
        const auto end = std::min(list.find(':'), list.size());
        if (end > 0)
            parts.emplace_back(list.substr(0, end));
        list.remove_prefix(std::min(end + 1, list.size()));
    }
    return parts;
}

bool isProgramThere(const std::string& program, const std::vector<std::string>& folders)
{
    if (program.find('/') != std::string::npos)
        return ::access(program.c_str(), X_OK) == 0;
    return std::ranges::any_of(folders, [&](const std::string& folder) {
        return ::access(appendingPathComponent(folder, program).c_str(), X_OK) == 0;
    });
}

fs::file_time_type timeOf(const fs::path& folder)
{
    std::error_code failure;
    const auto time = fs::last_write_time(folder, failure);
    return failure ? fs::file_time_type::min() : time;
}

} // namespace

DesktopEntryPlaces DesktopEntryPlaces::ofThisUser()
{
    DesktopEntryPlaces places;
    const auto home = environment("HOME", "/");
    const std::string folders = environment("XDG_DATA_HOME", home + "/.local/share") + ":"
        + environment("XDG_DATA_DIRS", "/usr/local/share:/usr/share");
    for (const std::string& folder : splitAtColons(folders))
        if (folder.starts_with('/'))
            places.folders.push_back(appendingPathComponent(folder, "applications"));
    places.programFolders = splitAtColons(environment("PATH", "/usr/local/bin:/usr/bin:/bin"));
    places.languages = preferredLanguages(
        environment("LC_ALL", environment("LC_MESSAGES", environment("LANG", ""))));
    return places;
}

std::shared_ptr<const DesktopEntries> DesktopEntries::read(DesktopEntryPlaces places)
{
    auto entries = std::make_shared<DesktopEntries>();
    entries->places = std::move(places);
    for (const std::string& folder : entries->places.folders)
        entries->readFolder(folder, "", maxFolderLevels);
    entries->makeIndexes();
    return entries;
}

bool DesktopEntries::isOutdated() const
{
    return folderTimes.empty() || std::ranges::any_of(folderTimes, [](const auto& folder) {
        return timeOf(folder.first) != folder.second;
    });
}

void DesktopEntries::readFolder(const fs::path& folder, const std::string& prefix, int depth)
{
    // The time is read first, so that a change during the reading makes the entries outdated.
    if (!folderTimes.emplace(folder.native(), timeOf(folder)).second || depth == 0)
        return;
    std::error_code failure;
    for (fs::directory_iterator at(folder, failure), end; !failure && at != end;
         at.increment(failure)) {
        const std::string name = at->path().filename().native();
        if (std::error_code unknown; at->is_directory(unknown))
            readFolder(at->path(), prefix + name + "-", depth - 1);
        else if (name.ends_with(suffix))
            readEntry(at->path(), prefix + name.substr(0, name.size() - suffix.size()));
    }
}

void DesktopEntries::readEntry(const fs::path& file, const std::string& identifier)
{
    if (entries.contains(identifier))
        return;
    const auto text = readFile(file.native(), maxEntryBytes);
    auto entry = text ? parseDesktopEntry(*text, places.languages) : std::nullopt;
    if (entry)
        entries.emplace(identifier, std::move(*entry));
}

void DesktopEntries::makeIndexes()
{
    std::erase_if(entries, [this](const auto& each) {
        const DesktopEntry& entry = each.second;
        return entry.isHidden
            || (!entry.requiredProgram.empty()
                && !isProgramThere(entry.requiredProgram, places.programFolders));
    });
    // Of several entries for one program, the one shown in the menu is the application itself.
    for (const bool isInMenu : { true, false })
        for (const auto& [identifier, entry] : entries)
            if (entry.isInMenu == isInMenu)
                addToIndexes(identifier, entry);
}

void DesktopEntries::addToIndexes(const std::string& identifier, const DesktopEntry& entry)
{
    byLowerCaseIdentifier.emplace(lowercased(identifier), identifier);
    if (!entry.windowClass.empty())
        byClass.emplace(entry.windowClass, identifier);
    if (!entry.program.empty())
        byProgramName.emplace(entry.program, identifier);
}

DesktopEntries::Found DesktopEntries::byIdentifier(std::string_view identifier) const
{
    const auto at = entries.find(identifier);
    return at == entries.end() ? Found {} : Found { at->first, &at->second };
}

DesktopEntries::Found DesktopEntries::byWindowClass(
    std::string_view instance, std::string_view className) const
{
    for (const auto& name : { instance, className })
        if (auto found = follow(byClass, name))
            return found;
    for (const auto& name : { instance, className })
        if (auto found = follow(byLowerCaseIdentifier, lowercased(name)))
            return found;
    return {};
}

DesktopEntries::Found DesktopEntries::byProgram(std::string_view program) const
{
    return follow(byProgramName, program);
}

DesktopEntries::Found DesktopEntries::follow(const Index& index, std::string_view key) const
{
    const auto at = index.find(key);
    return at == index.end() ? Found {} : byIdentifier(at->second);
}

} // namespace stemvault::workspace
