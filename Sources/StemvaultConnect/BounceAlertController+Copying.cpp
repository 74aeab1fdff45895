#include "Foundation/FileManager.h"
#include "Foundation/NotificationCenter.h"
#include "Platform/Platform.h"
#include "StemvaultConnect/BounceAlertController.h"

namespace stemvault {

namespace {

FileURL destination(const FileURL& fileURL, const StemvaultFolder& folder)
{
    return FileURL(folder.path).appendingPathComponent(fileURL.lastPathComponent());
}

void notifyUser(const std::string& body)
{
    Platform::current().userNotificationCenter.add(
        { UUID().uuidString(), "Added to Stemvault", body, UserNotificationSound::Default });
}

void showCopyFailed(const std::string& reason)
{
    Platform::current().dispatch.mainAsync([reason] {
        Alert alert;
        alert.messageText = "Copy failed";
        alert.informativeText = reason;
        // There is nothing to choose: any answer closes it.
        static_cast<void>(Platform::current().dialogs.runModal(alert));
    });
}

/// A batch never replaces and never asks.
bool copyIfFree(const FileURL& fileURL, const FileURL& destURL)
{
    return !FileManager::fileExists(destURL.path())
        && FileManager::copyItem(fileURL, destURL).has_value();
}

std::string batchBody(std::size_t copied, std::size_t skipped, const std::string& folderName)
{
    std::string body =
        std::to_string(copied) + " file" + (copied == 1 ? "" : "s") + " → " + folderName;
    if (skipped > 0)
        body += " (" + std::to_string(skipped) + " skipped — already existed)";
    return body;
}

} // namespace

void BounceAlertController::setUpUserNotifications()
{
    UserNotificationCenter& center = Platform::current().userNotificationCenter;
    center.setDelegate(this);
    center.requestAuthorization(
        AuthorizationOption::Alert | AuthorizationOption::Sound, [](bool) {});
}

void BounceAlertController::willPresent(const UserNotification& /*notification*/,
    const std::function<void(std::uint32_t options)>& completionHandler)
{
    completionHandler(PresentationOption::Banner | PresentationOption::Sound);
}

void BounceAlertController::copyFile(const FileURL& fileURL, const StemvaultFolder& folder)
{
    const FileURL destURL = destination(fileURL, folder);
    const auto answered = alive.guard([this, fileURL, destURL, folder](bool exists) {
        copyIfWanted(fileURL, destURL, folder, exists);
    });
    Dispatch& dispatch = Platform::current().dispatch;
    dispatch.utilityAsync([&dispatch, destURL, answered] {
        const bool exists = FileManager::fileExists(destURL.path());
        dispatch.mainAsync([answered, exists] { answered(exists); });
    });
}

void BounceAlertController::copyIfWanted(
    const FileURL& fileURL, const FileURL& destURL, const StemvaultFolder& folder, bool exists)
{
    if (exists && !mayReplace(fileURL, folder))
        return;
    Platform::current().dispatch.utilityAsync(
        [fileURL, destURL, folder] { performCopy(fileURL, destURL, folder); });
}

bool BounceAlertController::mayReplace(const FileURL& fileURL, const StemvaultFolder& folder) const
{
    Alert alert;
    alert.messageText = "Replace existing file?";
    alert.informativeText =
        fileURL.lastPathComponent() + " already exists in \"" + folder.name + "\".";
    alert.style = AlertStyle::Warning;
    alert.icon = appIcon;
    alert.buttons = { "Replace", "Cancel" };
    return Platform::current().dialogs.runModal(alert).response == ModalResponse::alertFirstButton;
}

void BounceAlertController::performCopy(
    const FileURL& fileURL, const FileURL& destURL, const StemvaultFolder& folder)
{
    // The old file goes only when the new one is whole, so that a failure never leaves neither.
    const auto copied = FileManager::fileExists(destURL.path())
        ? FileManager::replaceItem(fileURL, destURL)
        : FileManager::copyItem(fileURL, destURL);
    if (!copied) {
        showCopyFailed(copied.error());
        return;
    }
    const std::string fileName = fileURL.lastPathComponent();
    NotificationCenter::defaultCenter().post(
        { bounceAdded, { { "file", fileName }, { "destination", folder.name } } });
    notifyUser(fileName + " → " + folder.name);
}

void BounceAlertController::copyBatch(
    const std::vector<Entry>& files, const StemvaultFolder& folder)
{
    Platform::current().dispatch.utilityAsync([files, folder] {
        std::size_t copied = 0;
        for (const auto& [fileURL, sourceFolder] : files)
            if (copyIfFree(fileURL, destination(fileURL, folder)))
                ++copied;
        NotificationCenter::defaultCenter().post(
            { bounceAdded, { { "destination", folder.name } } });
        notifyUser(batchBody(copied, files.size() - copied, folder.name));
    });
}

} // namespace stemvault
