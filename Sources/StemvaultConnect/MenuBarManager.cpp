#include "StemvaultConnect/MenuBarManager.h"

#include "Foundation/NotificationCenter.h"
#include "Platform/Platform.h"
#include "StemvaultConnect/BounceAlertController.h"
#include "StemvaultConnect/PreferencesView.h"
#include "StemvaultConnect/SessionTracker.h"
#include "StemvaultConnect/SettingsStore.h"
#include "StemvaultConnect/UpdateChecker.h"

#include <chrono>
#include <utility>

namespace stemvault {

namespace {

using namespace std::chrono_literals;

// At login a desktop may start its status bar after this program.
constexpr auto timeForStatusBar = 10s;
constexpr std::size_t sessionMenuItem = 0;
constexpr std::size_t lastCopiedMenuItem = 1;

MenuItem item(const std::string& title, const std::string& keyEquivalent, Action action)
{
    MenuItem made;
    made.title = title;
    made.keyEquivalent = keyEquivalent;
    made.action = std::move(action);
    return made;
}

/// A row that only shows a text.
MenuItem line(const std::string& title)
{
    MenuItem made;
    made.title = title;
    made.isEnabled = false;
    return made;
}

} // namespace

MenuBarManager::MenuBarManager()
{
    const Platform& platform = Platform::current();
    statusItem = platform.statusBar.statusItem(StatusBar::squareLength);
    auto image = platform.bundle.imageWithSystemSymbolName("waveform.circle", "Stemvault Connect");
    if (image)
        image->isTemplate = true;
    statusItem->setImage(image);
    build();
    // `bounceAdded` is posted from a background thread. It is handled on the main thread, and
    // nothing of this object is accessed before that.
    const auto added =
        alive.guard([this](const Notification& notification) { handleBounceAdded(notification); });
    NotificationCenter& center = NotificationCenter::defaultCenter();
    center.addObserver(this, std::string(BounceAlertController::openPreferences),
        [this](const Notification&) { openPreferences(); });
    center.addObserver(this, std::string(BounceAlertController::bounceAdded),
        [&dispatch = platform.dispatch, added](const Notification& notification) {
            dispatch.mainAsync([added, notification] { added(notification); });
        });
    platform.dispatch.mainAsyncAfter(
        timeForStatusBar, alive.guard([this] { openPreferencesIfTrayMissing(); }));
}

// Otherwise the first start would show nothing at all on a desktop without a status bar.
void MenuBarManager::openPreferencesIfTrayMissing()
{
    const SettingsStore& settings = SettingsStore::shared();
    const bool isSetUp = !settings.stemvaultFolders().empty() || settings.projectsRootPath()
        || settings.alwaysWatchPath();
    if (!isSetUp && !preferencesWindow && !statusItem->isVisible())
        openPreferences();
}

MenuBarManager::~MenuBarManager()
{
    NotificationCenter::defaultCenter().removeObserver(this);
}

void MenuBarManager::build()
{
    MenuItem lastAdded = line("");
    lastAdded.isHidden = true;
    Menu menu;
    menu.items = {
        line("No session detected"),
        lastAdded,
        MenuItem::separatorItem(),
        item("Preferences…", ",", [this] { openPreferences(); }),
        item("Check for Updates…", "", [] { checkForUpdates(); }),
        MenuItem::separatorItem(),
        item("Quit Stemvault Connect", "q", [] { Platform::current().application.terminate(); }),
    };
    statusItem->setMenu(std::move(menu), this);
}

void MenuBarManager::handleBounceAdded(const Notification& notification)
{
    auto text = lastAddedText(notification);
    if (!text)
        return;
    lastCopied = std::move(text);
    statusItem->setMenuNeedsUpdate();
}

void MenuBarManager::sessionDidChange()
{
    statusItem->setMenuNeedsUpdate();
}

void MenuBarManager::menuWillOpen(Menu& menu)
{
    const auto& folder = SessionTracker::shared().currentSessionFolder();
    MenuItem& session = menu.items.at(sessionMenuItem);
    session.attributedTitle = sessionTitle(folder);
    if (folder)
        session.title = session.attributedTitle->string;
    MenuItem& lastAdded = menu.items.at(lastCopiedMenuItem);
    if (lastCopied)
        lastAdded.title = *lastCopied;
    lastAdded.isHidden = !lastCopied;
}

// The colour applies to two characters, the dot and the blank after it, but not to the name.
AttributedString MenuBarManager::sessionTitle(const std::optional<FileURL>& folder)
{
    if (folder)
        return { "● " + folder->lastPathComponent(), ForegroundColor { Color::SystemGreen, 0, 2 } };
    return { "○ No session detected", ForegroundColor { Color::SecondaryLabel, 0, 2 } };
}

std::optional<std::string> MenuBarManager::lastAddedText(const Notification& notification)
{
    const auto& payload = notification.userInfo;
    const auto file = payload.find("file");
    const auto destination = payload.find("destination");
    if (file == payload.end() || destination == payload.end())
        return std::nullopt;
    return "Last added: " + file->second + " → " + destination->second;
}

void MenuBarManager::checkForUpdates()
{
    UpdateChecker::shared().checkForUpdates();
}

void MenuBarManager::openPreferences()
{
    const Platform& platform = Platform::current();
    if (!preferencesWindow) {
        const auto view = std::make_shared<PreferencesView>();
        preferencesWindow = platform.windows.window([view] { return view->draw(); });
        view->onNeedsDisplay = [this] { preferencesWindow->setNeedsDisplay(); };
        preferencesWindow->setTitle("Stemvault Connect");
        preferencesWindow->setStyleMask(WindowStyleMask::Titled | WindowStyleMask::Closable);
        preferencesWindow->center();
    }
    preferencesWindow->makeKeyAndOrderFront();
    platform.application.activateIgnoringOtherApps();
}

} // namespace stemvault
