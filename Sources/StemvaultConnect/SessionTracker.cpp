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
    std::vector<std::int32_t> dawPIDs;
    for (const RunningApplication& application : platform.workspace.runningApplications())
        if (isWorthScanning(application))
            dawPIDs.push_back(application.processIdentifier);
    updateTimer();

    const auto applied = alive.guard([this](const std::optional<FileURL>& found) { apply(found); });
    platform.dispatch.utilityAsync(
        [&platform, tracker = alive.token(), dawPIDs = std::move(dawPIDs), applied]() {
            auto found = tracker.expired() ? std::nullopt
                                           : findOpenSessionFolder(platform.processRunner, dawPIDs);
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
    ProcessRunner& processRunner, std::span<const std::int32_t> dawPIDs)
{
    for (const std::int32_t pid : dawPIDs)
        if (auto found = sessionFolderFromLsof(processRunner, pid, sessionFileExtensions))
            return found;
    return std::nullopt;
}

std::optional<FileURL> SessionTracker::sessionFolderFromLsof(
    ProcessRunner& processRunner, std::int32_t pid, std::span<const std::string_view> extensions)
{
    const auto output =
        processRunner.run(processRunner.pathForTool("lsof"), { "-p", std::to_string(pid), "-Fn" });
    if (!output)
        return std::nullopt;
    return sessionFolder(openPaths(*output), extensions, FileManager::contentModificationDate);
}

} // namespace stemvault
