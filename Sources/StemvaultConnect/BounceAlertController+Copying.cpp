#include "FileManager/FileManager.h"
#include "Foundation/NotificationCenter.h"
#include "Foundation/UnicodeText.h"
#include "Platform/Platform.h"
#include "StemvaultConnect/BounceAlertController.h"
#include "StemvaultConnect/BounceWatcher.h"
#include "StemvaultConnect/Prompts.h"

#include <chrono>
#include <set>
#include <utility>

namespace stemvault {

namespace {

using namespace std::chrono_literals;
using Entry = BounceAlertController::Entry;

constexpr auto lookInterval = 500ms;
constexpr int maxAttempts = 10min / lookInterval;

FileURL destination(const Entry& entry, const StemvaultFolder& folder)
{
    return FileURL(folder.path).appendingPathComponent(entry.file.lastPathComponent());
}

void announceCopied(const std::string& fileName, const std::string& folderName)
{
    NotificationCenter::defaultCenter().post({ std::string(BounceAlertController::bounceAdded),
        { { "file", fileName }, { "destination", folderName } } });
    notifyUser("Added to Stemvault", printable(fileName) + " → " + printable(folderName));
}

void showCopyFailed(const std::string& reason)
{
    Platform::current().dispatch.mainAsync([reason] {
        Alert alert;
        alert.messageText = "Copy failed";
        alert.informativeText = reason;
        // The alert offers no choice, so its answer is ignored.
        static_cast<void>(Platform::current().dialogs.runModal(alert));
    });
}

Failure notAtRest(const Entry& entry)
{
    return { "“" + printable(entry.file.lastPathComponent())
            + "” couldn’t be copied because another program is still writing it.",
        true };
}

/// Also true if the file cannot be read: the copy then fails with the reason.
bool isAtRestNow(const Entry& entry)
{
    const auto isLeftAlone = [now = Platform::current().dispatch.now()](
                                 const FileManager::SourceState& source) {
        return BounceWatcher::isAtRest(source, now);
    };
    const auto state = FileManager::sourceState(entry.file, entry.foundIn, isLeftAlone);
    return !state || isLeftAlone(*state);
}

/// Fails with `isTransient` set if the file is not at rest, or changes while it is copied.
Result<void> copyAtRest(
    const Entry& entry, const FileURL& destURL, decltype(FileManager::copyItem)& copyItem)
{
    if (!isAtRestNow(entry))
        return notAtRest(entry);
    return copyItem(entry.file, destURL, entry.foundIn);
}

/// Runs the work on the main thread half a second later, without blocking a thread meanwhile. May
/// be called from any thread.
void retryLater(const Work& look)
{
    Dispatch& dispatch = Platform::current().dispatch;
    dispatch.mainAsync([&dispatch, look] { dispatch.mainAsyncAfter(lookInterval, look); });
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

/// A copy that the user has asked for, until it is made.
struct BounceAlertController::Copy {
    Entry entry;
    StemvaultFolder folder;
    bool isReplacing = false; ///< The user has agreed to replace the existing file.
    int attempts = 0; ///< How often the source was checked and found not at rest.
};

struct BounceAlertController::Batch {
    std::vector<Entry> files; ///< Those that are still to be copied.
    StemvaultFolder folder;
    std::size_t copied = 0;
    std::size_t skipped = 0;
    int attempts = 0; ///< How often files were checked and found not at rest.

    void copyWhatIsAtRest();
};

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
    performCopy({ entry, folder });
}

void BounceAlertController::askToReplace(Copy copy)
{
    Alert alert;
    alert.messageText = "Replace existing file?";
    alert.informativeText = printable(copy.entry.file.lastPathComponent()) + " already exists in \""
        + printable(copy.folder.name) + "\".";
    alert.style = AlertStyle::Warning;
    alert.icon = appIcon;
    alert.buttons = { "Replace", "Cancel" };
    copy.isReplacing = true;
    if (Platform::current().dialogs.runModal(alert).response == ModalResponse::alertFirstButton)
        performCopy(copy);
}

// The check whether the name is taken runs in the same background work as the copy, so that neither
// is dropped when the program ends. An earlier copy that is still running may take a free name
// before this copy does; the user is asked before that file is replaced as well.
void BounceAlertController::performCopy(const Copy& copy)
{
    const auto ask = alive.guard([this, copy] { askToReplace(copy); });
    Copy later = copy;
    ++later.attempts;
    const auto lookAgain = alive.guard([this, later] { performCopy(later); });
    const auto work = [copy, ask, lookAgain] {
        const auto& [entry, folder, isReplacing, attempts] = copy;
        const FileURL destURL = destination(entry, folder);
        if (!isReplacing && FileManager::fileExists(destURL.path()))
            return Platform::current().dispatch.mainAsync(ask);
        const auto copied = copyAtRest(
            entry, destURL, isReplacing ? FileManager::replaceItem : FileManager::copyItem);
        if (copied) {
            BounceWatcher::noteCopy(destURL);
            announceCopied(entry.file.lastPathComponent(), folder.name);
        } else if (!isReplacing && FileManager::fileExists(destURL.path())) {
            Platform::current().dispatch.mainAsync(ask);
        } else if (copied.isTransient() && attempts < maxAttempts) {
            retryLater(lookAgain);
        } else {
            showCopyFailed(copied.error());
        }
    };
    Platform::current().dispatch.utilityAsync(work, AtEnd::Finished);
}

void BounceAlertController::copyBatch(
    const std::vector<Entry>& files, const StemvaultFolder& folder)
{
    continueBatch({ files, folder });
}

// Files that are not at rest are tried again later; one notification at the end covers all files.
void BounceAlertController::continueBatch(const Batch& batch)
{
    const auto lookAgain = alive.guard([this](const Batch& rest) { continueBatch(rest); });
    const auto work = [batch, lookAgain] {
        Batch rest = batch;
        rest.copyWhatIsAtRest();
        if (!rest.files.empty() && rest.attempts++ < maxAttempts)
            return retryLater([lookAgain, rest] { lookAgain(rest); });
        rest.skipped += rest.files.size();
        NotificationCenter::defaultCenter().post(
            { std::string(bounceAdded), { { "destination", rest.folder.name } } });
        notifyUser("Added to Stemvault",
            batchBody(rest.copied, rest.skipped, printable(rest.folder.name)));
    };
    Platform::current().dispatch.utilityAsync(work, AtEnd::Finished);
}

// A batch never replaces and never asks. Of two files with the same name the first is copied, even
// if the second comes to rest before it.
void BounceAlertController::Batch::copyWhatIsAtRest()
{
    std::vector<Entry> waiting;
    std::set<std::string> namesWaitedFor;
    for (const Entry& entry : files) {
        const FileURL destURL = destination(entry, folder);
        if (FileManager::fileExists(destURL.path())) {
            ++skipped;
            continue;
        }
        if (namesWaitedFor.contains(destURL.path())) {
            waiting.push_back(entry);
        } else if (const auto copying = copyAtRest(entry, destURL, FileManager::copyItem)) {
            BounceWatcher::noteCopy(destURL);
            ++copied;
        } else if (copying.isTransient()) {
            namesWaitedFor.insert(destURL.path());
            waiting.push_back(entry);
        } else {
            ++skipped;
        }
    }
    files = std::move(waiting);
}

} // namespace stemvault
