#pragma once

#include "LinuxDesktop/Workspace/DesktopEntry.h"

#include <filesystem>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace stemvault {

/// Where the desktop entries are and in which language they are wanted.
struct DesktopEntryPlaces {
    std::vector<std::string> folders; ///< Of two entries of one identifier the earlier one counts.
    std::vector<std::string> programFolders; ///< Where a program without a path is looked for.
    std::vector<std::string> languages;

    /// By this program's environment.
    [[nodiscard]] static DesktopEntryPlaces ofThisUser();
};

/// The desktop's applications. Reading them takes many files and belongs on a background thread;
/// what has been read never changes and may be used from any.
class DesktopEntries {
public:
    [[nodiscard]] static std::shared_ptr<const DesktopEntries> read(DesktopEntryPlaces places);

    /// Whether an entry has come or gone since, by the times of the folders. Those that were
    /// never read are. Asks the disk.
    [[nodiscard]] bool isOutdated() const;

    struct Found {
        std::string identifier;
        const DesktopEntry* entry = nullptr; ///< Null when there is none.

        explicit operator bool() const { return entry != nullptr; }
    };

    [[nodiscard]] Found byIdentifier(std::string_view identifier) const;
    /// By what the entry says of its windows, else by its identifier, whatever the case.
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

} // namespace stemvault
