#pragma once

#include "LinuxDesktop/Workspace/DesktopEntry.h"

#include <filesystem>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace stemvault::workspace {

/// Where the desktop entries are, and the preferred languages for their names.
struct DesktopEntryPlaces {
    std::vector<std::string> folders; ///< Of entries with one identifier, the first one counts.
    std::vector<std::string> programFolders; ///< Searched for programs given without a path.
    std::vector<std::string> languages;

    /// From this program's environment.
    [[nodiscard]] static DesktopEntryPlaces ofThisUser();
};

/// The desktop's applications. Reading them opens many files and belongs on a background thread.
/// The result never changes and may be used from any thread.
class DesktopEntries {
public:
    [[nodiscard]] static std::shared_ptr<const DesktopEntries> read(DesktopEntryPlaces places);

    /// Whether entries were added or removed since the reading, judged by the times of the folders.
    /// True if nothing was ever read. Reads from the disk.
    [[nodiscard]] bool isOutdated() const;

    struct Found {
        std::string identifier;
        const DesktopEntry* entry = nullptr; ///< Null if there is none.

        explicit operator bool() const { return entry != nullptr; }
    };

    [[nodiscard]] Found byIdentifier(std::string_view identifier) const;
    /// By the window class that the entry states, or else by its identifier, ignoring case.
    [[nodiscard]] Found byWindowClass(std::string_view instance, std::string_view className) const;
    [[nodiscard]] Found byProgram(std::string_view program) const;

private:
    using Index = std::map<std::string, std::string, std::less<>>;

    void readFolder(const std::filesystem::path& folder, const std::string& prefix, int depth);
    void readEntry(const std::filesystem::path& file, const std::string& identifier);
    void makeIndexes();
    void addToIndexes(const std::string& identifier, const DesktopEntry& entry);
    [[nodiscard]] Found follow(const Index& index, std::string_view key) const;

    DesktopEntryPlaces places;
    std::map<std::string, DesktopEntry, std::less<>> entries;
    std::map<std::string, std::filesystem::file_time_type> folderTimes;
    Index byClass;
    Index byLowerCaseIdentifier;
    Index byProgramName;
};

} // namespace stemvault::workspace
