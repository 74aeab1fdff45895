#include "StemvaultConnect/SessionTracker.h"

#include "Foundation/DAWTable.h"
#include "Foundation/FileManager.h"
#include "Foundation/UnicodeText.h"
#include "Platform/Platform.h"
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

/// As lsof prints them.
std::optional<std::string> openFiles(ProcessRunner& processRunner, std::int32_t process)
{
    return processRunner.run(
        processRunner.pathForTool("lsof"), { "-p", std::to_string(process), "-Fn" });
}

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
    std::vector<Candidate> candidates;
    for (const RunningApplication& application : platform.workspace.runningApplications())
        if (isWorthScanning(application))
            candidates.push_back({ application.processIdentifier, application.fileServerIdentifier,
                dawWithBundleIdentifier(*application.bundleIdentifier) });
    updateTimer();

    const auto applied = alive.guard([this](const std::optional<FileURL>& found) { apply(found); });
    platform.dispatch.utilityAsync([&platform, tracker = alive.token(),
                                       candidates = std::move(candidates), applied]() {
        auto found = tracker.expired() ? std::nullopt
                                       : findOpenSessionFolder(platform.processRunner, candidates);
        platform.dispatch.mainAsync([applied, found = std::move(found)] { applied(found); });
    });
}

void SessionTracker::apply(const std::optional<FileURL>& found)
{
    if (found == folder)
        return;
    folder = found;
    // A copy: an observer may bring another one.
    for (const Observer& observer : std::vector(observers))
        observer(found);
}

void SessionTracker::updateTimer()
{
    pollTimer.reset();
    const Platform& platform = Platform::current();
    if (std::ranges::any_of(platform.workspace.runningApplications(), isDAW))
        pollTimer =
            platform.dispatch.scheduledTimer(timeBetweenPolls, alive.guard([this] { refresh(); }));
}

std::optional<FileURL> SessionTracker::findOpenSessionFolder(
    ProcessRunner& processRunner, std::span<const Candidate> candidates)
{
    for (const Candidate& candidate : candidates)
        if (auto found =
                sessionFolderFromLsof(processRunner, candidate.process, sessionFileExtensions))
            return found;
    for (const Candidate& candidate : candidates)
        if (auto found = sessionFolderFromServer(processRunner, candidate))
            return found;
    return std::nullopt;
}

/// A server has the files of several programs open, so that only a session file of this DAW's own
/// kind says anything.
std::optional<FileURL> SessionTracker::sessionFolderFromServer(
    ProcessRunner& processRunner, const Candidate& candidate)
{
    if (candidate.fileServer == 0 || candidate.daw == nullptr)
        return std::nullopt;
    const auto output = openFiles(processRunner, candidate.fileServer);
    if (!output)
        return std::nullopt;
    const DAWNames& extensions = candidate.daw->sessionFiles;
    return newestSessionFileFolder(openPaths(*output), { extensions.begin(), extensions.end() },
        FileManager::contentModificationDate);
}

std::optional<FileURL> SessionTracker::sessionFolderFromLsof(
    ProcessRunner& processRunner, std::int32_t pid, std::span<const std::string_view> extensions)
{
    const auto output = openFiles(processRunner, pid);
    if (!output)
        return std::nullopt;
    return sessionFolder(openPaths(*output), extensions, FileManager::contentModificationDate);
}

} // namespace stemvault
