#include "StemvaultConnect/ServiceProvider.h"

#include "FileManager/FileManager.h"
#include "Foundation/UnicodeText.h"
#include "StemvaultConnect/BounceAlertController.h"
#include "StemvaultConnect/BounceWatcher.h"

#include <iterator>

namespace stemvault {

using Entry = BounceAlertController::Entry;

const std::string ServiceProvider::noSelection = "No files or folders were selected.";
const std::string ServiceProvider::noAudioFiles = "No audio files found in that selection.";

bool ServiceProvider::perform(const std::string& message, const Pasteboard& pasteboard,
    const std::string& userData, std::string& error)
{
    if (message == "addToStemvault")
        addToStemvault(pasteboard, userData, error);
    else if (message == "createStemvaultPlaylist")
        createStemvaultPlaylist(pasteboard, userData, error);
    else
        return false;
    return true;
}

void ServiceProvider::addToStemvault(
    const Pasteboard& pasteboard, const std::string& /*userData*/, std::string& error)
{
    if (!pasteboard.filenames || pasteboard.filenames->empty()) {
        error = noSelection;
        return;
    }
    std::vector<Entry> entries;
    for (const std::string& path : *pasteboard.filenames) {
        const FileURL url(path);
        const auto kind = FileManager::itemKind(path);
        if (kind == FileManager::ItemKind::Directory)
            for (const AudioFile& file : audioFilesInFolder(url))
                entries.push_back({ file.url, url.lastPathComponent(), file.foundIn });
        else if (kind && isAudioFile(url))
            entries.push_back({ url, url.deletingLastPathComponent().lastPathComponent(),
                namedFile(url).foundIn });
    }
    if (entries.empty()) {
        error = noAudioFiles;
        return;
    }
    auto& queue = BounceAlertController::shared().queue;
    queue.insert(queue.end(), std::make_move_iterator(entries.begin()),
        std::make_move_iterator(entries.end()));
    BounceAlertController::shared().showNextIfIdle();
}

bool ServiceProvider::isAudioFile(const FileURL& url)
{
    return BounceWatcher::audioExtensions().contains(lowercased(url.pathExtension()));
}

// A link that the user has selected is followed. A regular file must still be one when it is
// copied.
ServiceProvider::AudioFile ServiceProvider::namedFile(const FileURL& url)
{
    const auto attributes = FileManager::attributesOfItem(url.path());
    if (!attributes || !attributes->isRegularFile)
        return { url, std::nullopt };
    const std::string folder = url.deletingLastPathComponent().path();
    return { url, FileManager::identityOfFolder(folder).value_or(FileIdentity {}) };
}

// Judges entries only by their extension, not by their type. Links among them are not followed when
// they are copied, because they may lead to files that the user did not mean to select.
std::vector<ServiceProvider::AudioFile> ServiceProvider::audioFilesInFolder(const FileURL& folder)
{
    const auto foundIn = FileManager::identityOfFolder(folder.path()).value_or(FileIdentity {});
    std::vector<AudioFile> files;
    for (const FileURL& entry :
        FileManager::contentsOfDirectory(folder).value_or(std::vector<FileURL>()))
        if (isAudioFile(entry))
            files.push_back({ entry, foundIn });
    return files;
}

} // namespace stemvault
