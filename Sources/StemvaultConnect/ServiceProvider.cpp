#include "StemvaultConnect/ServiceProvider.h"

#include "Foundation/FileManager+Folders.h"
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
            for (const FileURL& file : audioFilesInFolder(url))
                entries.emplace_back(file, url.lastPathComponent());
        else if (kind && isAudioFile(url))
            entries.emplace_back(url, url.deletingLastPathComponent().lastPathComponent());
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

// By the extension alone: an entry is not asked what it is.
std::vector<FileURL> ServiceProvider::audioFilesInFolder(const FileURL& folder)
{
    auto contents = FileManager::contentsOfDirectory(folder).value_or(std::vector<FileURL>());
    std::erase_if(contents, [](const FileURL& entry) { return !isAudioFile(entry); });
    return contents;
}

} // namespace stemvault
