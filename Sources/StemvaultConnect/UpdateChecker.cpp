#include "StemvaultConnect/UpdateChecker.h"

#include "Foundation/URLComponents.h"
#include "Foundation/UnicodeText.h"
#include "Platform/Platform.h"
#include "StemvaultConnect/Prompts.h"
#include "StemvaultConnect/UpdateFeed.h"

namespace stemvault {

UpdateChecker::UpdateChecker()
    : updatesURL(std::string("https://") + STEMVAULT_UPDATE_HOST + STEMVAULT_UPDATE_PATH)
{
}

UpdateChecker::~UpdateChecker() = default;

void UpdateChecker::checkForUpdatesIfNeeded()
{
    const Platform& platform = Platform::current();
    const WallTime now = platform.dispatch.now();
    const auto lastCheck = platform.userDefaults.date(lastCheckKey);
    // Compares times instead of a difference, which would overflow for a date far in the past.
    if (lastCheck && *lastCheck > now - checkInterval)
        return;
    // Written first, so that even a check that fails is not repeated for a day.
    platform.userDefaults.setDate(lastCheckKey, now);
    check(Silent::Yes);
}

void UpdateChecker::checkForUpdates()
{
    check(Silent::No);
}

void UpdateChecker::check(Silent silent)
{
    const Platform& platform = Platform::current();
    const auto evaluated =
        alive.guard([this, silent](const Result<std::string>& body) { evaluate(body, silent); });
    platform.urlSession.dataTask(
        updatesURL, [&dispatch = platform.dispatch, evaluated](const Result<std::string>& body) {
            dispatch.mainAsync([evaluated, body] { evaluated(body); });
        });
}

void UpdateChecker::evaluate(const Result<std::string>& body, Silent silent) const
{
    const auto info = ownEntry(body);
    if (!info) {
        if (silent == Silent::No)
            presentError();
        return;
    }
    const std::string currentVersion =
        Platform::current().bundle.shortVersionString().value_or("0");
    if (isNewer(info->latestVersion, currentVersion))
        presentUpdateAvailable(*info);
    else if (silent == Silent::No)
        presentUpToDate(currentVersion);
}

std::optional<UpdateInfo> UpdateChecker::ownEntry(const Result<std::string>& body) const
{
    if (!body || !isValidUTF8(body.value()))
        return std::nullopt;
    const auto json = extractJSON(body.value());
    if (!json)
        return std::nullopt;
    const auto infos = decodedFeed(*json);
    if (!infos || !infos->contains(appKey))
        return std::nullopt;
    return infos->at(appKey);
}

void UpdateChecker::presentUpdateAvailable(const UpdateInfo& info)
{
    Alert alert;
    alert.messageText = "Update Available";
    alert.informativeText = "Stemvault Connect " + info.latestVersion + " is available.";
    if (info.notes && !info.notes->empty())
        alert.informativeText += "\n\n" + *info.notes;
    alert.style = AlertStyle::Informational;
    alert.buttons = { "Download", "Later" };
    const bool isWanted = runInFront(alert).response == ModalResponse::alertFirstButton;
    // The result is ignored, because the user sees whether the page opened.
    if (isWanted && !info.downloadURL.empty() && URLComponents::fromString(info.downloadURL))
        static_cast<void>(Platform::current().workspace.open(info.downloadURL));
}

void UpdateChecker::presentUpToDate(const std::string& currentVersion)
{
    Alert alert;
    alert.messageText = "You're Up to Date";
    alert.informativeText = "Stemvault Connect " + currentVersion + " is the latest version.";
    alert.style = AlertStyle::Informational;
    alert.buttons = { "OK" };
    runInFront(alert);
}

void UpdateChecker::presentError()
{
    Alert alert;
    alert.messageText = "Couldn't Check for Updates";
    alert.informativeText = "Please check your internet connection and try again.";
    alert.style = AlertStyle::Warning;
    alert.buttons = { "OK" };
    runInFront(alert);
}

} // namespace stemvault
