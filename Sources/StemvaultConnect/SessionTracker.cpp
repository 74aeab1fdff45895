#include "StemvaultConnect/SessionTracker.h"

#include "FileManager/FileManager.h"
#include "Foundation/DAWTable.h"
#include "Foundation/HomeDirectory.h"
#include "Foundation/PathText.h"
#include "Foundation/UnicodeText.h"
#include "Platform/Platform.h"
#include "StemvaultConnect/MediaSession.h"
#include "StemvaultConnect/SessionFolder.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <string>
#include <utility>

namespace stemvault {

namespace {

using namespace std::chrono_literals;

constexpr auto timeBetweenPolls = 30s;

constexpr std::array<std::string_view, 6> sessionFileExtensions = { "ptx", "logicx", "als", "song",
    "cpr", "rpp" };

} // namespace

SessionTracker::SessionTracker() = default;
SessionTracker::~SessionTracker() = default;

void SessionTracker::start()
{
    refresh();
    updateTimer();
    for (const auto notification : { WorkspaceNotification::DidLaunchApplication,
             WorkspaceNotification::DidTerminateApplication,
             WorkspaceNotification::DidActivateApplication })
        Platform::current().workspace.addObserver(
            this, notification, alive.guard([this] { refresh(); }));
}

void SessionTracker::stop()
{
    pollTimer.reset();
    Platform::current().workspace.removeObserver(this);
}

bool SessionTracker::isDAW(const RunningApplication& application)
{
    return application.bundleIdentifier
        && dawWithBundleIdentifier(*application.bundleIdentifier) != nullptr;
}

bool SessionTracker::isWorthScanning(const RunningApplication& application)
{
    if (!application.bundleIdentifier || application.activationPolicy != ActivationPolicy::Regular)
        return false;
    if (isDAW(application))
        return true;
    if (!application.localizedName)
        return false;
    const std::string name = lowercased(*application.localizedName);
    return name.find("pro tools") != std::string::npos || name.find("logic") != std::string::npos;
}

void SessionTracker::refresh()
{
    const Platform& platform = Platform::current();
    Scan scan { ++lastScan, {} };
    for (const RunningApplication& application : platform.workspace.runningApplications())
        if (isWorthScanning(application))
            scan.candidates.push_back(
                { application.processIdentifier, application.fileServerIdentifier,
                    dawWithBundleIdentifier(*application.bundleIdentifier) });
    updateTimer();

    const auto scanned = alive.guard([this](const Scan& done) { advance(done); });
    platform.dispatch.utilityAsync(
        [&platform, tracker = alive.token(), scan = std::move(scan), scanned]() mutable {
            if (!tracker.expired())
                findOpenSessionFolder(platform.openFiles, scan);
            platform.dispatch.mainAsync([scanned, scan = std::move(scan)] { scanned(scan); });
        });
}

// Only one scan at a time examines the media, because all of them would hang on a drive that does
// not respond. Of the scans that are waiting, only the latest is kept.
void SessionTracker::advance(Scan scan)
{
    if (scan.folder || scan.candidates.empty())
        return apply(scan);
    const auto found = alive.guard([this](const Scan& done) {
        if (done.number > lastApplied)
            apply(done);
    });
    mediaLooks.dropWaiting();
    mediaLooks.ask({}, {}, [scan = std::move(scan), found]() mutable -> Work {
        findByMedia(scan);
        return [found, scan = std::move(scan)] { found(scan); };
    });
}

void SessionTracker::apply(const Scan& scan)
{
    const bool isOvertaken = scan.number < lastApplied;
    lastApplied = std::max(lastApplied, scan.number);
    // Some DAWs close their media when they lose the focus, others close the session file once they
    // have read it.
    if (!scan.folder && owner && isRunning(*owner))
        return;
    owner = scan.owner;
    if (scan.folder == folder)
        return;
    folder = scan.folder;
    // A copy, because an observer may add another one.
    for (const Observer& observer : std::vector(observers))
        observer(scan.folder);
    // This scan began before the last application quit or launched, and if no DAW runs any more,
    // no timer would correct it.
    if (isOvertaken)
        refresh();
}

bool SessionTracker::isRunning(const Owner& daw)
{
    return std::ranges::any_of(Platform::current().workspace.runningApplications(),
        [&daw](const RunningApplication& application) {
            return application.processIdentifier == daw.process && application.bundleIdentifier
                && dawWithBundleIdentifier(*application.bundleIdentifier) == daw.daw;
        });
}

std::vector<std::string> SessionTracker::workingFolders() const
{
    std::vector<std::string> paths;
    if (folder && owner)
        for (const std::string_view name : owner->daw->workingFolders)
            paths.push_back(appendingPathComponent(folder->path(), name));
    return paths;
}

void SessionTracker::updateTimer()
{
    pollTimer.reset();
    const Platform& platform = Platform::current();
    if (std::ranges::any_of(platform.workspace.runningApplications(), isDAW))
        pollTimer =
            platform.dispatch.scheduledTimer(timeBetweenPolls, alive.guard([this] { refresh(); }));
}

void SessionTracker::findOpenSessionFolder(OpenFiles& openFiles, Scan& scan)
{
    for (Candidate& candidate : scan.candidates) {
        scan.folder = sessionFolderFromLsof(openFiles, candidate, sessionFileExtensions);
        if (scan.folder)
            return;
    }
    for (const Candidate& candidate : scan.candidates) {
        scan.folder = sessionFolderFromServer(openFiles, candidate);
        if (!scan.folder)
            continue;
        scan.owner = Owner { candidate.process, candidate.daw };
        return;
    }
}

/// A server has the files of several programs open, so only a session file of this DAW's own type
/// counts.
std::optional<FileURL> SessionTracker::sessionFolderFromServer(
    OpenFiles& openFiles, const Candidate& candidate)
{
    if (candidate.fileServer == 0 || candidate.daw == nullptr)
        return std::nullopt;
    const auto output = openFiles.listing(candidate.fileServer);
    if (!output)
        return std::nullopt;
    const DAWNames& extensions = candidate.daw->sessionFiles;
    return newestSessionFileFolder(openPaths(*output), { extensions.begin(), extensions.end() },
        FileManager::contentModificationDate);
}

std::optional<FileURL> SessionTracker::sessionFolderFromLsof(
    OpenFiles& openFiles, Candidate& candidate, std::span<const std::string_view> extensions)
{
    candidate.openFiles = openFiles.listing(candidate.process);
    if (!candidate.openFiles)
        return std::nullopt;
    return sessionFolder(
        openPaths(*candidate.openFiles), extensions, FileManager::contentModificationDate);
}

void SessionTracker::findByMedia(Scan& scan)
{
    for (const Candidate& candidate : scan.candidates) {
        const DAW* const daw = candidate.daw;
        if (daw == nullptr || !candidate.openFiles)
            continue;
        scan.folder = mediaSessionFolder(openPaths(*candidate.openFiles), *daw, homeDirectory(),
            [daw](const std::string& path) { return newestSessionFile(path, *daw); });
        if (!scan.folder)
            continue;
        scan.owner = Owner { candidate.process, daw };
        return;
    }
}

} // namespace stemvault
