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

/// The content of the preferences window: a function of the settings, the open session and the
/// switch. Every edit takes effect at once. Main thread only.
class PreferencesView {
public:
    PreferencesView();
    ~PreferencesView();
    PreferencesView(const PreferencesView&) = delete;
    PreferencesView& operator=(const PreferencesView&) = delete;

    /// Called when the view looks different from how it was drawn last, or may soon.
    std::function<void()> onNeedsDisplay;

    /// The view as things stand. Asks nothing of the disk.
    [[nodiscard]] View body();

    /// For each drawing: has the listed folders looked for, and gives the body. What they turn out
    /// to be is drawn once it is known.
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
    bool launchAtLogin; ///< Of the view alone: where the switch stands.
    FolderPresence presence;

    WeakGuard alive;
};

/// The path with the user's home folder written as "~", wherever in it that stands.
[[nodiscard]] std::string homeAbbreviated(const std::string& path, const std::string& home);

} // namespace stemvault
