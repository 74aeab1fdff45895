#include "Foundation/FileManager.h"
#include "Foundation/NotificationCenter.h"
#include "Foundation/UnicodeText.h"
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

void tellCopied(const std::string& fileName, const std::string& folderName)
{
    NotificationCenter::defaultCenter().post({ std::string(BounceAlertController::bounceAdded),
        { { "file", fileName }, { "destination", folderName } } });
    notifyUser(printable(fileName) + " → " + printable(folderName));
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
    const auto proceed = alive.guard([this, fileURL, destURL, folder](bool exists) {
        if (exists)
            askToReplace(fileURL, destURL, folder);
        else
            performCopy(fileURL, destURL, folder, IfTaken::Ask);
    });
    Dispatch& dispatch = Platform::current().dispatch;
    dispatch.utilityAsync([&dispatch, destURL, proceed] {
        const bool exists = FileManager::fileExists(destURL.path());
        dispatch.mainAsync([proceed, exists] { proceed(exists); });
    });
}

void BounceAlertController::askToReplace(
    const FileURL& fileURL, const FileURL& destURL, const StemvaultFolder& folder)
{
    Alert alert;
    alert.messageText = "Replace existing file?";
    alert.informativeText = printable(fileURL.lastPathComponent()) + " already exists in \""
        + printable(folder.name) + "\".";
    alert.style = AlertStyle::Warning;
    alert.icon = appIcon;
    alert.buttons = { "Replace", "Cancel" };
    if (Platform::current().dialogs.runModal(alert).response == ModalResponse::alertFirstButton)
        performCopy(fileURL, destURL, folder, IfTaken::Replace);
}

void BounceAlertController::performCopy(
    const FileURL& fileURL, const FileURL& destURL, const StemvaultFolder& folder, IfTaken ifTaken)
{
    // A name that was free may be taken by the time of the copy, by an earlier copy still on its
    // way: that file is not replaced without a question either.
    const auto ask =
        alive.guard([this, fileURL, destURL, folder] { askToReplace(fileURL, destURL, folder); });
    const auto copy = [fileURL, destURL, folder, ifTaken, ask] {
        const auto copied = ifTaken == IfTaken::Replace ? FileManager::replaceItem(fileURL, destURL)
                                                        : FileManager::copyItem(fileURL, destURL);
        if (copied)
            tellCopied(fileURL.lastPathComponent(), folder.name);
        else if (ifTaken == IfTaken::Ask && FileManager::fileExists(destURL.path()))
            Platform::current().dispatch.mainAsync(ask);
        else
            showCopyFailed(copied.error());
    };
    Platform::current().dispatch.utilityAsync(copy, AtEnd::Finished);
}

void BounceAlertController::copyBatch(
    const std::vector<Entry>& files, const StemvaultFolder& folder)
{
    const auto copy = [files, folder] {
        std::size_t copied = 0;
        for (const auto& [fileURL, sourceFolder] : files)
            if (copyIfFree(fileURL, destination(fileURL, folder)))
                ++copied;
        NotificationCenter::defaultCenter().post(
            { std::string(bounceAdded), { { "destination", folder.name } } });
        notifyUser(batchBody(copied, files.size() - copied, printable(folder.name)));
    };
    Platform::current().dispatch.utilityAsync(copy, AtEnd::Finished);
}

} // namespace stemvault
