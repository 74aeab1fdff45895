#include "Foundation/FileManager.h"
#include "Foundation/NotificationCenter.h"
#include "Foundation/UnicodeText.h"
#include "Platform/Platform.h"
#include "StemvaultConnect/BounceAlertController.h"

namespace stemvault {

namespace {

using Entry = BounceAlertController::Entry;

FileURL destination(const Entry& entry, const StemvaultFolder& folder)
{
    return FileURL(folder.path).appendingPathComponent(entry.file.lastPathComponent());
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
bool copyIfFree(const Entry& entry, const FileURL& destURL)
{
    return !FileManager::fileExists(destURL.path())
        && FileManager::copyItem(entry.file, destURL, entry.foundIn).has_value();
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

void BounceAlertController::copyFile(const Entry& entry, const StemvaultFolder& folder)
{
    const FileURL destURL = destination(entry, folder);
    const auto proceed = alive.guard([this, entry, destURL, folder](bool exists) {
        if (exists)
            askToReplace(entry, destURL, folder);
        else
            performCopy(entry, destURL, folder, IfTaken::Ask);
    });
    Dispatch& dispatch = Platform::current().dispatch;
    dispatch.utilityAsync([&dispatch, destURL, proceed] {
        const bool exists = FileManager::fileExists(destURL.path());
        dispatch.mainAsync([proceed, exists] { proceed(exists); });
    });
}

void BounceAlertController::askToReplace(
    const Entry& entry, const FileURL& destURL, const StemvaultFolder& folder)
{
    Alert alert;
    alert.messageText = "Replace existing file?";
    alert.informativeText = printable(entry.file.lastPathComponent()) + " already exists in \""
        + printable(folder.name) + "\".";
    alert.style = AlertStyle::Warning;
    alert.icon = appIcon;
    alert.buttons = { "Replace", "Cancel" };
    if (Platform::current().dialogs.runModal(alert).response == ModalResponse::alertFirstButton)
        performCopy(entry, destURL, folder, IfTaken::Replace);
}

void BounceAlertController::performCopy(
    const Entry& entry, const FileURL& destURL, const StemvaultFolder& folder, IfTaken ifTaken)
{
    // A name that was free may be taken by the time of the copy, by an earlier copy still on its
    // way: that file is not replaced without a question either.
    const auto ask =
        alive.guard([this, entry, destURL, folder] { askToReplace(entry, destURL, folder); });
    const auto copy = [entry, destURL, folder, ifTaken, ask] {
        const auto copyItem =
            ifTaken == IfTaken::Replace ? FileManager::replaceItem : FileManager::copyItem;
        const auto copied = copyItem(entry.file, destURL, entry.foundIn);
        if (copied)
            tellCopied(entry.file.lastPathComponent(), folder.name);
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
        for (const Entry& entry : files)
            if (copyIfFree(entry, destination(entry, folder)))
                ++copied;
        NotificationCenter::defaultCenter().post(
            { std::string(bounceAdded), { { "destination", folder.name } } });
        notifyUser(batchBody(copied, files.size() - copied, printable(folder.name)));
    };
    Platform::current().dispatch.utilityAsync(copy, AtEnd::Finished);
}

} // namespace stemvault
