#include "StemvaultConnect/BounceAlertController.h"
#include "StemvaultConnect/ServiceProvider.h"
#include "StemvaultConnect/SettingsStore.h"
#include "Support/FakePlatform.h"
#include "Support/NoticeRecorder.h"
#include "Support/TemporaryFolder.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <filesystem>

namespace stemvault {
namespace {

using testing::ElementsAre;
using testing::EndsWith;
using testing::IsEmpty;
using testing::StartsWith;

using Paths = std::vector<std::string>;

struct ServiceProviderTests : testing::Test {
    std::string perform(const std::string& message, const std::optional<Paths>& filenames)
    {
        std::string error;
        EXPECT_TRUE(provider.perform(message, { filenames }, "ignored", error));
        return error;
    }

    /// Makes a playlist of the selection under the name that the user types.
    void createPlaylist(FakePlatform& desktop, const Paths& selection, const std::string& name)
    {
        SettingsStore::shared().setProjectsRootPath(root);
        desktop.dialogs.answerText("Create", name);
        EXPECT_EQ(perform("createStemvaultPlaylist", paths(selection)), "");
    }

    /// Creates files whose content is their name, and folders for names that end with a slash.
    void make(const Paths& names) const
    {
        for (const std::string& name : names)
            name.ends_with('/') ? folder.makeFolder(name) : folder.write(name, name);
    }

    [[nodiscard]] Paths paths(const Paths& names) const
    {
        Paths all;
        for (const std::string& name : names)
            all.push_back(folder.path(name));
        return all;
    }

    FakePlatform platform;
    TemporaryFolder folder;
    const std::string root = folder.makeFolder("Projects");
    ServiceProvider provider;
};

TEST_F(ServiceProviderTests, WithoutASelectionNothingHappens)
{
    for (const char* message : { "addToStemvault", "createStemvaultPlaylist" })
        for (const std::optional<Paths>& none : { std::optional<Paths>(), std::optional(Paths()) })
            EXPECT_EQ(perform(message, none), "No files or folders were selected.");
    std::string error;
    EXPECT_FALSE(provider.perform("mixDown", { Paths { "/a.wav" } }, "", error));
    EXPECT_FALSE(BounceAlertController::isMade());
}

TEST_F(ServiceProviderTests, TheWalkTakesAudioFilesAndNamesTheirFolder)
{
    make({ "Song/a.wav", "Song/B.AIFF", "Song/.hidden.mp3", "Song/notes.txt", "Song/wav",
        "Song/stems/deep.wav", "Song/c.mov/", "Mixes/Mix.WAV", "Mixes/a.flac", "take.wav.tmp",
        "Empty/", "a\xff\n%.wav/x.flac" });
    std::filesystem::create_symlink("nowhere", folder.path("dangling.wav"));
    std::filesystem::create_directory_symlink("Song", folder.path("link"));
    const struct {
        const char* what;
        Paths selection;
        Paths queued;
    } rows[] = {
        { "a folder, one level deep, hidden files too", { "Song" },
            { "Song/.hidden.mp3", "Song/B.AIFF", "Song/a.wav", "Song/c.mov" } },
        { "a link to a folder", { "link/" },
            { "link/.hidden.mp3", "link/B.AIFF", "link/a.wav", "link/c.mov" } },
        { "files, as they were selected", { "Mixes/a.flac", "Mixes/Mix.WAV", "Mixes/a.flac" },
            { "Mixes/a.flac", "Mixes/Mix.WAV", "Mixes/a.flac" } },
        { "a folder that is named like a file", { "a\xff\n%.wav" }, { "a\xff\n%.wav/x.flac" } },
        { "no audio extension", { "take.wav.tmp", "Song/notes.txt", "Song/wav" }, {} },
        { "nothing there", { "gone.wav", "dangling.wav", "Mixes/a.flac/x.wav", "Empty" }, {} },
        { "the rest of a selection goes on", { "gone.wav", "Mixes/a.flac" }, { "Mixes/a.flac" } },
    };
    for (const auto& row : rows) {
        FakePlatform desktop;
        Paths queued;
        if (!row.queued.empty()) {
            SettingsStore::shared().setProjectsRootPath(root);
            BounceAlertController::shared().queue.push_back({ FileURL("/s/earlier.wav"), "s" });
            desktop.dialogs.answer("Cancel", 0, [&queued] {
                for (const auto& entry : BounceAlertController::shared().queue)
                    queued.push_back(entry.sourceFolder + "/" + entry.file.lastPathComponent());
            });
        }
        EXPECT_EQ(perform("addToStemvault", paths(row.selection)),
            row.queued.empty() ? "No audio files found in that selection." : "")
            << row.what;
        // The file system decides the order of the files in a folder.
        if (row.selection.size() == 1)
            std::ranges::sort(queued);
        EXPECT_EQ(queued, row.queued) << row.what;
        EXPECT_EQ(BounceAlertController::isMade(), !row.queued.empty()) << row.what;
    }
}

TEST_F(ServiceProviderTests, OnlyALinkThatWasSelectedItselfIsFollowed)
{
    make({ "Song/a.wav", "private/key", "private/Keys/key", "Client A/" });
    std::filesystem::create_symlink("../private/key", folder.path("Song/key.wav"));
    std::filesystem::create_directory_symlink("../private/Keys", folder.path("Song/keys.wav"));
    const struct {
        const char* what;
        Paths selection;
        Paths copied;
    } rows[] = {
        { "a folder with links", { "Song" }, { "a.wav" } },
        { "a link", { "Song/key.wav" }, { "key.wav" } },
        { "a link to a folder of no audio", { "Song/keys.wav", "Song/a.wav" }, { "a.wav" } },
    };
    for (const auto& row : rows) {
        FakePlatform desktop;
        createPlaylist(desktop, row.selection, "New");
        EXPECT_THAT(folder.names("Projects/New"), testing::ElementsAreArray(row.copied))
            << row.what;
        std::filesystem::remove_all(root + "/New");

        SettingsStore::shared().addFolder({ UUID(), "Client A", folder.path("Client A") });
        const bool isBatch = row.selection == Paths { "Song" };
        desktop.dialogs.answer(isBatch ? "Add All (3)" : "Add");
        EXPECT_EQ(perform("addToStemvault", paths(row.selection)), "");
        desktop.dispatch.settle();
        EXPECT_THAT(folder.names("Client A"), testing::ElementsAreArray(row.copied)) << row.what;
        for (const std::string& name : folder.names("Client A"))
            std::filesystem::remove(folder.path("Client A/" + name));
    }
}

TEST_F(ServiceProviderTests, APlaylistIsAskedForMadeOpenedAndAnnounced)
{
    make({ "Song Demos/a.wav", "Song Demos/b.wav", "Other/a.wav", "Projects/Song Demos/" });
    platform.userDefaults.strings["sv_debug_base_url"] = "http://localhost:8/x?old=1#top";
    createPlaylist(platform, { "Song Demos", "Other/a.wav" }, "Song Demos");

    EXPECT_THAT(platform.dialogs.alerts,
        ElementsAre(Alert { "Create Stemvault playlist",
            "This will be the new project's folder name.", AlertStyle::Informational, {},
            TextField { { 0, 0, 280, 24 }, "Song Demos", true }, { "Create", "Cancel" } }));
    EXPECT_THAT(platform.dialogs.activationsBefore, ElementsAre(1));
    EXPECT_EQ(folder.read("Projects/Song Demos 2/a.wav"), "Song Demos/a.wav")
        << "the first of the two files called a.wav";
    EXPECT_EQ(folder.read("Projects/Song Demos 2/b.wav"), "Song Demos/b.wav");
    EXPECT_THAT(platform.workspace.opened,
        ElementsAre("http://localhost:8/x?prefillFolder=/song%20demos%202&title=Song%20Demos"
                    "&autoscan=1#top"));
    const std::string identifier = platform.userNotificationCenter.posted.at(0).identifier;
    EXPECT_TRUE(UUID::fromString(identifier));
    EXPECT_THAT(platform.userNotificationCenter.posted,
        ElementsAre(UserNotification { identifier, "Stemvault playlist ready",
            "Song Demos — 2 files copied, opening browser…", UserNotificationSound::Default }));
    EXPECT_FALSE(BounceAlertController::isMade()) << "no permission for notifications is asked for";
}

TEST_F(ServiceProviderTests, ANamePromptThatIsCancelledOrClosedMakesNothing)
{
    make({ "Song/a.wav" });
    SettingsStore::shared().setProjectsRootPath(root);
    for (const int response : { ModalResponse::alertFirstButton + 1, ModalResponse::stopped, 0 }) {
        platform.dialogs.answerNumber(response);
        EXPECT_EQ(perform("createStemvaultPlaylist", paths({ "Song" })), "");
        EXPECT_TRUE(std::filesystem::is_empty(root)) << response;
    }
    EXPECT_TRUE(platform.workspace.opened.empty());
    EXPECT_TRUE(platform.userNotificationCenter.posted.empty());
}

TEST_F(ServiceProviderTests, TheDefaultNameIsThatOfTheFirstFolderOrOfTheFirstFilesFolder)
{
    make({ "Song/a.wav", "Other/b.wav", "Empty/", "notes.txt" });
    const std::pair<Paths, std::string> rows[] = {
        { { "notes.txt", "Song" }, "Song" },
        { { "Empty", "Other/b.wav" }, "Empty" },
        { { "gone", "Other/b.wav", "Song" }, "Other" },
        { { "Song/" }, "Song" },
    };
    for (const auto& [selection, name] : rows) {
        FakePlatform desktop;
        SettingsStore::shared().setProjectsRootPath(root);
        desktop.dialogs.answer("Cancel");
        EXPECT_EQ(perform("createStemvaultPlaylist", paths(selection)), "");
        EXPECT_EQ(std::get<TextField>(*desktop.dialogs.alerts.at(0).accessoryView).text, name);
        EXPECT_THAT(folder.names("Projects"), IsEmpty()) << "cancelled";
    }
}

TEST_F(ServiceProviderTests, TheTypedNameBecomesThatOfAFreeFolderAndIsInTheLink)
{
    make({ "Song/a.wav", "Projects/Taken", "Projects/Taken 2/" });
    std::filesystem::create_symlink("nowhere", root + "/Taken 3");
    const struct {
        std::string typed, folderName, link;
    } rows[] = {
        { "a/b:c", "a-b-c", "a-b-c&title=a-b-c" },
        { " \t\u3000Mix\u00A0\r\n", "Mix", "mix&title=Mix" },
        { " \n\u2028", "Song", "song&title=Song" },
        { "Taken", "Taken 4", "taken%204&title=Taken" },
        { "..", ".. 2", "..%202&title=.." },
        { "\xff\xfe A", "\xff\xfe A", "%FF%FE%20a&title=%FF%FE%20A" },
        { "Ä İ ΑΣ", "Ä İ ΑΣ",
            "%C3%A4%20i%CC%87%20%CE%B1%CF%82&title=%C3%84%20%C4%B0%20%CE%91%CE%A3" },
        { "100% A+B&C=D;#1?", "100% A+B&C=D;#1?",
            "100%25%20a%2Bb%26c%3Dd%3B%231%3F&title=100%25%20A%2BB%26C%3DD%3B%231%3F" },
        { R"("n"'m'\<b>|`^{}[])", R"("n"'m'\<b>|`^{}[])",
            "%22n%22%27m%27%5C%3Cb%3E%7C%60%5E%7B%7D%5B%5D"
            "&title=%22n%22%27m%27%5C%3Cb%3E%7C%60%5E%7B%7D%5B%5D" },
    };
    for (const auto& row : rows) {
        FakePlatform desktop;
        createPlaylist(desktop, { "Song" }, row.typed);
        EXPECT_EQ(folder.read("Projects/" + row.folderName + "/a.wav"), "Song/a.wav") << row.typed;
        EXPECT_THAT(desktop.workspace.opened,
            ElementsAre(AllOf(
                StartsWith("https://"), EndsWith("?prefillFolder=/" + row.link + "&autoscan=1"))));
    }
}

TEST_F(ServiceProviderTests, TheEndOfTheProgramOpensNoPreferences)
{
    const NoticeRecorder preferences { "openPreferences" };
    platform.dialogs.answerNumber(ModalResponse::stopped);
    perform("createStemvaultPlaylist", paths({ "Song" }));
    EXPECT_EQ(platform.dialogs.alerts.at(0).messageText, "No Projects Root set");
    EXPECT_THAT(preferences.notices, IsEmpty());
}

TEST_F(ServiceProviderTests, EachFailureIsAnsweredInItsPlace)
{
    make({ "Song/a.wav", "Copy/a.wav", "notes.txt", "Dangling/" });
    std::filesystem::create_symlink("nowhere", folder.path("Dangling/a.wav"));
    const std::string made = "The folder was created and files were copied to " + root + "/New";
    const std::string byHand = " — open this link manually:\n\nhttp://h?prefillFolder=/new%20";
    const Paths selection { "Song", "Copy/a.wav" };
    const NoticeRecorder preferences { "openPreferences" };
    const struct {
        std::optional<std::string> projectsRoot;
        const char* base;
        Paths selection;
        std::string message, informativeText, error;
        Paths bodies;
    } rows[] = {
        { {}, "http://h", { "gone" }, "No Projects Root set",
            "Set a Stemvault Projects Root in Preferences before using Create Stemvault Playlist. "
            "Opening Preferences now.",
            "Set a Stemvault Projects Root in Preferences first.", {} },
        { root, "http://h", { "notes.txt" }, "No audio files found",
            "That selection didn't contain any files with a recognized audio extension.",
            "No audio files found in that selection.", {} },
        { folder.path("gone"), "http://h", selection, "Couldn't create project folder",
            "The folder “New” couldn’t be made because the folder “gone” doesn’t exist.", "", {} },
        { folder.path("notes.txt"), "http://h", selection, "Couldn't create project folder",
            "The folder “New” couldn’t be made because “notes.txt” isn’t a folder.", "", {} },
        { root, "http://a b", selection, "Couldn't build the Stemvault link",
            made + ", but opening the browser failed. Check the Projects Root in Preferences.", "",
            {} },
        { root, "http://h", selection, "Couldn't open the browser",
            made + " 2" + byHand + "2&title=New&autoscan=1", "",
            { "New — 1 file copied, opening browser…" } },
        { root, "http://h", { "Dangling" }, "Couldn't open the browser",
            made + " 3" + byHand + "3&title=New&autoscan=1", "",
            { "New — 0 files copied, opening browser…" } },
    };
    for (const auto& row : rows) {
        FakePlatform desktop;
        desktop.userDefaults.strings["sv_debug_base_url"] = row.base;
        desktop.workspace.canOpen = false;
        SettingsStore::shared().setProjectsRootPath(row.projectsRoot);
        if (row.error.empty())
            desktop.dialogs.answerText("Create", "New");
        desktop.dialogs.answer("OK", 0, [&desktop] {
            EXPECT_THAT(desktop.userNotificationCenter.posted, IsEmpty())
                << "the browser comes before the notification";
        });
        EXPECT_EQ(perform("createStemvaultPlaylist", paths(row.selection)), row.error);
        EXPECT_EQ(desktop.dialogs.alerts.back(),
            (Alert { row.message, row.informativeText, AlertStyle::Warning, {}, {}, {} }));
        EXPECT_EQ(desktop.application.activations, desktop.dialogs.alerts.size());
        EXPECT_EQ(desktop.dialogs.activationsBefore.back(), desktop.application.activations)
            << "to the front first";
        EXPECT_EQ(desktop.userNotificationCenter.bodies(), row.bodies);
    }
    EXPECT_THAT(preferences.notices, ElementsAre(Notification { "openPreferences", {} }));
}

} // namespace
} // namespace stemvault
