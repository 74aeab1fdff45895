#include "StemvaultConnect/AppDelegate.h"

#include "Platform/Platform.h"
#include "StemvaultConnect/BounceAlertController.h"
#include "StemvaultConnect/BounceWatcher.h"
#include "StemvaultConnect/MenuBarManager.h"
#include "StemvaultConnect/SessionTracker.h"
#include "StemvaultConnect/SettingsStore.h"
#include "StemvaultConnect/UpdateChecker.h"

#include <optional>
#include <string>

namespace stemvault {

namespace {

void setApplicationIcon()
{
    const Platform& platform = Platform::current();
    if (const auto path = platform.bundle.pathForResource("AppIcon", "icns"))
        if (const auto image = platform.bundle.imageWithContentsOfFile(*path))
            platform.application.setApplicationIconImage(*image);
}

void watch(const std::optional<FileURL>& sessionFolder)
{
    BounceWatcher::shared().update(sessionFolder, SettingsStore::shared().alwaysWatchPath());
}

void prompt(
    const FileURL& file, const std::string& folderName, const std::optional<FileIdentity>& folder)
{
    // If the folder could not be read, use an identity that no folder has. Without any, the copy
    // would follow a link, which it must never do for a bounce.
    const FileIdentity foundIn = folder.value_or(FileIdentity {});
    BounceAlertController::shared().queue.push_back({ file, folderName, foundIn });
    BounceAlertController::shared().showNextIfIdle();
}

} // namespace

AppDelegate::AppDelegate() = default;
AppDelegate::~AppDelegate() = default;

void AppDelegate::applicationDidFinishLaunching()
{
    Platform::current().application.setServicesProvider(&serviceProvider);
    setApplicationIcon();
    menuBarManager = std::make_unique<MenuBarManager>();
    SessionTracker::shared().observers.emplace_back(
        [this](const std::optional<FileURL>& sessionFolder) {
            // A scan that ends after watching has stopped must not start a new stream.
            if (!isTerminating)
                watch(sessionFolder);
        });
    BounceWatcher::shared().onBounceDetected = prompt;
    SessionTracker::shared().start();
    watch(SessionTracker::shared().currentSessionFolder());
    UpdateChecker::shared().checkForUpdatesIfNeeded();
    // Panels may fetch the menu's rows at any time, so they are notified when the rows change.
    SessionTracker::shared().observers.emplace_back(
        [this](const std::optional<FileURL>&) { menuBarManager->sessionDidChange(); });
}

// A user who starts the program again wants to see it, and there may be no tray.
void AppDelegate::applicationShouldHandleReopen()
{
    menuBarManager->openPreferences();
}

void AppDelegate::applicationWillTerminate()
{
    isTerminating = true;
    SessionTracker::shared().stop();
    BounceWatcher::shared().stop();
}

} // namespace stemvault
