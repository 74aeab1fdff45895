#pragma once

#include "Foundation/ObservableObject.h"
#include "Foundation/Shared.h"
#include "StemvaultConnect/StemvaultFolder.h"

#include <optional>
#include <string>
#include <vector>

namespace stemvault {

/// The user's settings, kept in memory and written completely at every change. Main thread only.
class SettingsStore : public Shared<SettingsStore>, public ObservableObject {
public:
    /// Destinations in the order in which they were added.
    [[nodiscard]] const std::vector<StemvaultFolder>& stemvaultFolders() const { return folders; }
    void setStemvaultFolders(std::vector<StemvaultFolder> newFolders);

    /// A folder that is watched whether or not a session is open.
    [[nodiscard]] const std::optional<std::string>& alwaysWatchPath() const { return alwaysWatch; }
    void setAlwaysWatchPath(std::optional<std::string> path);

    /// The folder in which new project folders are created.
    [[nodiscard]] const std::optional<std::string>& projectsRootPath() const
    {
        return projectsRoot;
    }
    void setProjectsRootPath(std::optional<std::string> path);

    /// Appends the folder without checking for an equal one.
    void addFolder(const StemvaultFolder& folder);
    void removeFolder(const UUID& id);

private:
    friend class Shared<SettingsStore>;
    SettingsStore();

    void load();
    void save() const;

    std::vector<StemvaultFolder> folders;
    std::optional<std::string> alwaysWatch;
    std::optional<std::string> projectsRoot;
    const std::string key = "settingsStore_v1";
};

} // namespace stemvault
