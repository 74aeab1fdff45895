#include "Platform/Platform.h"
#include "StemvaultConnect/BounceWatcher.h"
#include "StemvaultConnect/PreferencesView.h"
#include "StemvaultConnect/Prompts.h"
#include "StemvaultConnect/SessionTracker.h"
#include "StemvaultConnect/SessionTrackerObservable.h"
#include "StemvaultConnect/SettingsStore.h"

#include <utility>

namespace stemvault {

namespace {

/// Absent when the user cancelled.
std::optional<std::string> pickFolder(const std::string& prompt)
{
    const OpenPanelAnswer answer = Platform::current().dialogs.runModal(folderPanel(prompt));
    if (answer.response != ModalResponse::ok || !answer.url)
        return std::nullopt;
    return answer.url->path();
}

} // namespace

PreferencesView::PreferencesView()
    : store(SettingsStore::shared()), session(SessionTrackerObservable::shared()),
      launchAtLogin(Platform::current().loginItem.status() == LoginItemStatus::Enabled)
{
    const auto changed = alive.guard([this] { needDisplay(); });
    store.onWillChange(changed);
    session.onWillChange(changed);
    presence.onChange = changed;
}

PreferencesView::~PreferencesView() = default;

void PreferencesView::needDisplay()
{
    if (onNeedsDisplay)
        onNeedsDisplay();
}

View PreferencesView::draw()
{
    std::vector<std::string> paths;
    for (const StemvaultFolder& folder : store.stemvaultFolders())
        paths.push_back(folder.path);
    presence.look(std::move(paths));
    return body();
}

void PreferencesView::addFolders()
{
    OpenPanel panel = folderPanel("Add to Stemvault");
    panel.allowsMultipleSelection = true;
    const OpenPanelAnswer answer = Platform::current().dialogs.runModal(panel);
    if (answer.response != ModalResponse::ok)
        return;
    for (const FileURL& url : answer.urls) {
        auto folders = store.stemvaultFolders();
        folders.push_back({ UUID(), url.lastPathComponent(), url.path() });
        store.setStemvaultFolders(std::move(folders));
    }
}

void PreferencesView::pickProjectsRoot()
{
    if (auto path = pickFolder("Set as Projects Root"))
        store.setProjectsRootPath(std::move(path));
}

void PreferencesView::pickAlwaysWatchFolder()
{
    if (const auto path = pickFolder("Watch This Folder"))
        setAlwaysWatchPath(path);
}

void PreferencesView::setAlwaysWatchPath(const std::optional<std::string>& path)
{
    store.setAlwaysWatchPath(path);
    BounceWatcher::shared().update(SessionTracker::shared().currentSessionFolder(), path);
}

// The backend shows the desktop's keyboard shortcuts for this URL. The result is ignored, because
// there is nothing to do if that fails.
void PreferencesView::openServicesShortcutsPane()
{
    static_cast<void>(Platform::current().workspace.open(
        "x-apple.systempreferences:com.apple.preference.keyboard?Shortcuts_Services"));
}

void PreferencesView::setLaunchAtLogin(bool isOn)
{
    if (isOn == launchAtLogin)
        return;
    LoginItem& loginItem = Platform::current().loginItem;
    const auto done = isOn ? loginItem.registerItem() : loginItem.unregisterItem();
    // If that failed, the switch goes back to the true state, without a call of its `onChange`.
    launchAtLogin = done ? isOn : !isOn;
    needDisplay();
}

} // namespace stemvault
