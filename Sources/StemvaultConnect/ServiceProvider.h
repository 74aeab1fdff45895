#pragma once

#include "FileManager/FileIdentity.h"
#include "Foundation/FileURL.h"
#include "Platform/Application.h"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace stemvault {

/// Performs the two services that file managers offer for a selection. Keeps no state between
/// calls. Main thread only.
class ServiceProvider : public ServicesProvider {
public:
    /// The services by their message names, "addToStemvault" and "createStemvaultPlaylist".
    bool perform(const std::string& message, const Pasteboard& pasteboard,
        const std::string& userData, std::string& error) override;

    /// Asks the user about every audio file of the selection as if it had just been bounced. That
    /// includes the files directly in selected folders.
    void addToStemvault(
        const Pasteboard& pasteboard, const std::string& userData, std::string& error);

    /// Creates a project folder with the selection's audio files, and opens it in the web app.
    void createStemvaultPlaylist(
        const Pasteboard& pasteboard, const std::string& userData, std::string& error);

private:
    struct AudioFile {
        FileURL url;
        std::optional<FileIdentity> foundIn; ///< As in BounceAlertController::Entry.
    };

    struct AudioFiles {
        std::vector<AudioFile> files; ///< In the order in which they were found.
        std::string defaultName; ///< The project's name unless the user enters another one.
    };

    static const std::string noSelection;
    static const std::string noAudioFiles;

    [[nodiscard]] static bool isAudioFile(const FileURL& url);
    [[nodiscard]] static AudioFile namedFile(const FileURL& url);
    [[nodiscard]] static std::vector<AudioFile> audioFilesInFolder(const FileURL& folder);

    static void createProject(
        const std::string& projectName, const std::vector<AudioFile>& files, const FileURL& root);
    [[nodiscard]] static std::size_t copyInto(
        const FileURL& folder, const std::vector<AudioFile>& files);
    [[nodiscard]] static AudioFiles collectAudioFiles(const std::vector<std::string>& paths);
    [[nodiscard]] static std::optional<std::string> promptForProjectName(
        const std::string& defaultName);
    [[nodiscard]] static FileURL uniqueDestination(const std::string& name, const FileURL& root);
    [[nodiscard]] static std::optional<std::string> buildHandoffURL(
        const FileURL& destURL, const std::string& projectName);
};

} // namespace stemvault
