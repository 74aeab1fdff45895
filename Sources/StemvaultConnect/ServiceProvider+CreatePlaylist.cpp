#include "FileManager/FileManager.h"
#include "Foundation/NotificationCenter.h"
#include "Foundation/URLComponents.h"
#include "Foundation/UUID.h"
#include "Foundation/UnicodeText.h"
#include "Platform/Platform.h"
#include "StemvaultConnect/BounceAlertController.h"
#include "StemvaultConnect/BounceWatcher.h"
#include "StemvaultConnect/Prompts.h"
#include "StemvaultConnect/ServiceProvider.h"
#include "StemvaultConnect/SettingsStore.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace stemvault {

namespace {

constexpr Frame textFieldFrame { 0, 0, 280, 24 };

/// True if the user closed the alert, false if the end of the program did.
bool warn(const std::string& messageText, const std::string& informativeText)
{
    Alert alert;
    alert.messageText = messageText;
    alert.informativeText = informativeText;
    alert.style = AlertStyle::Warning;
    return runInFront(alert).response != ModalResponse::stopped;
}

void askForProjectsRoot()
{
    const bool isClosed = warn("No Projects Root set",
        "Set a Stemvault Projects Root in Preferences before using Create Stemvault Playlist. "
        "Opening Preferences now.");
    if (!isClosed)
        return;
    NotificationCenter::defaultCenter().post(
        { std::string(BounceAlertController::openPreferences), {} });
}

void openInBrowser(const std::string& url, const FileURL& folder)
{
    if (!Platform::current().workspace.open(url))
        warn("Couldn't open the browser",
            "The folder was created and files were copied to " + printable(folder.path())
                + " — open this link manually:\n\n" + url);
}

void announcePlaylist(const std::string& projectName, std::size_t copyCount)
{
    const std::string body = printable(projectName) + " — " + std::to_string(copyCount) + " file"
        + (copyCount == 1 ? "" : "s") + " copied, opening browser…";
    notifyUser("Stemvault playlist ready", body);
}

} // namespace

void ServiceProvider::createStemvaultPlaylist(
    const Pasteboard& pasteboard, const std::string& /*userData*/, std::string& error)
{
    if (!pasteboard.filenames || pasteboard.filenames->empty()) {
        error = noSelection;
        return;
    }
    // A copy: while an alert is open, the user may change the settings.
    const auto projectsRootPath = SettingsStore::shared().projectsRootPath();
    if (!projectsRootPath) {
        error = "Set a Stemvault Projects Root in Preferences first.";
        askForProjectsRoot();
        return;
    }
    const auto [files, defaultName] = collectAudioFiles(*pasteboard.filenames);
    if (files.empty()) {
        error = noAudioFiles;
        warn("No audio files found",
            "That selection didn't contain any files with a recognized audio extension.");
        return;
    }
    if (const auto projectName = promptForProjectName(defaultName))
        createProject(*projectName, files, FileURL(*projectsRootPath));
}

void ServiceProvider::createProject(
    const std::string& projectName, const std::vector<AudioFile>& files, const FileURL& root)
{
    const FileURL destURL = uniqueDestination(projectName, root);
    if (const auto created = FileManager::createDirectory(destURL); !created) {
        warn("Couldn't create project folder", created.error());
        return;
    }
    const std::size_t copyCount = copyInto(destURL, files);
    const auto url = buildHandoffURL(destURL, projectName);
    if (!url) {
        warn("Couldn't build the Stemvault link",
            "The folder was created and files were copied to " + printable(destURL.path())
                + ", but opening the browser failed. Check the Projects Root in Preferences.");
        return;
    }
    openInBrowser(*url, destURL);
    announcePlaylist(projectName, copyCount);
}

// Returns the number of copies. A file that cannot be copied is left out, and so is the second file
// with the same name, because copying never overwrites.
std::size_t ServiceProvider::copyInto(const FileURL& folder, const std::vector<AudioFile>& files)
{
    std::size_t copyCount = 0;
    for (const AudioFile& file : files) {
        const FileURL copy = folder.appendingPathComponent(file.url.lastPathComponent());
        if (!FileManager::copyItem(file.url, copy, file.foundIn))
            continue;
        BounceWatcher::noteCopy(copy);
        ++copyCount;
    }
    return copyCount;
}

ServiceProvider::AudioFiles ServiceProvider::collectAudioFiles(
    const std::vector<std::string>& paths)
{
    std::vector<AudioFile> files;
    std::optional<std::string> defaultName;
    for (const std::string& path : paths) {
        const FileURL url(path);
        const auto kind = FileManager::itemKind(path);
        if (kind == FileManager::ItemKind::Directory) {
            if (!defaultName)
                defaultName = url.lastPathComponent();
            std::ranges::move(audioFilesInFolder(url), std::back_inserter(files));
        } else if (kind && isAudioFile(url)) {
            if (!defaultName)
                defaultName = url.deletingLastPathComponent().lastPathComponent();
            files.push_back(namedFile(url));
        }
    }
    return { std::move(files), defaultName.value_or("New Playlist") };
}

std::optional<std::string> ServiceProvider::promptForProjectName(const std::string& defaultName)
{
    Alert alert;
    alert.messageText = "Create Stemvault playlist";
    alert.informativeText = "This will be the new project's folder name.";
    alert.style = AlertStyle::Informational;
    alert.buttons = { "Create", "Cancel" };
    alert.accessoryView = TextField { textFieldFrame, defaultName, true };
    const AlertAnswer answer = runInFront(alert);
    if (answer.response != ModalResponse::alertFirstButton)
        return std::nullopt;

    std::string name = trimmed(answer.text);
    if (name.empty())
        return defaultName;
    std::ranges::replace(name, '/', '-');
    std::ranges::replace(name, ':', '-');
    return name;
}

FileURL ServiceProvider::uniqueDestination(const std::string& name, const FileURL& root)
{
    FileURL candidate = root.appendingPathComponent(name);
    for (int counter = 2; FileManager::fileExists(candidate.path()); ++counter)
        candidate = root.appendingPathComponent(name + " " + std::to_string(counter));
    return candidate;
}

std::optional<std::string> ServiceProvider::buildHandoffURL(
    const FileURL& destURL, const std::string& projectName)
{
    const std::string folder = lowercased(destURL.lastPathComponent());
    const auto debugBase = Platform::current().userDefaults.string("sv_debug_base_url");
    auto components = URLComponents::fromString(debugBase.value_or(STEMVAULT_WEB_ORIGIN));
    if (!components)
        return std::nullopt;
    components->setQueryItems(
        { { "prefillFolder", "/" + folder }, { "title", projectName }, { "autoscan", "1" } });
    return components->absoluteString();
}

} // namespace stemvault
