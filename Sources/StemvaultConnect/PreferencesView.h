#pragma once

#include "Foundation/WeakGuard.h"
#include "Platform/View.h"
#include "StemvaultConnect/FolderPresence.h"

#include <functional>
#include <optional>
#include <string>

namespace stemvault {

class SessionTrackerObservable;
class SettingsStore;
struct OpenPanel;
struct StemvaultFolder;

/// The content of the preferences window. It depends on the settings, the open session, the switch
/// and the missing folders. Every edit takes effect at once. Main thread only.
class PreferencesView {
public:
    PreferencesView();
    ~PreferencesView();
    PreferencesView(const PreferencesView&) = delete;
    PreferencesView& operator=(const PreferencesView&) = delete;

    /// Called when the view has changed since it was last drawn, or is about to change.
    std::function<void()> onNeedsDisplay;

    /// The current view. Does not read the disk.
    [[nodiscard]] View body();

    /// Called for each drawing: starts to check whether the listed folders exist, and returns the
    /// body. The results are drawn once they are known.
    [[nodiscard]] View draw();

private:
    [[nodiscard]] View header();
    [[nodiscard]] View sessionSection();
    [[nodiscard]] View stemvaultFoldersSection();
    [[nodiscard]] View stemvaultFolderRow(const StemvaultFolder& folder);
    [[nodiscard]] View projectsRootSection();
    [[nodiscard]] View alwaysWatchSection();
    [[nodiscard]] View quickCopyHotkeySection();

    void addFolders();
    void pickProjectsRoot();
    void pickAlwaysWatchFolder();
    void setAlwaysWatchPath(const std::optional<std::string>& path);
    static void openServicesShortcutsPane();
    void setLaunchAtLogin(bool isOn);
    void needDisplay();

    SettingsStore& store;
    SessionTrackerObservable& session;
    bool launchAtLogin; ///< The position of the switch.
    FolderPresence presence;

    WeakGuard alive;
};

/// The path with every occurrence of the user's home folder replaced by "~".
[[nodiscard]] std::string homeAbbreviated(const std::string& path, const std::string& home);

} // namespace stemvault
