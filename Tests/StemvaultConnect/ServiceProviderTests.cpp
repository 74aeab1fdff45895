#include "StemvaultConnect/BounceAlertController.h"
#include "StemvaultConnect/ServiceProvider.h"
#include "StemvaultConnect/SettingsStore.h"
#include "Support/FakePlatform.h"
#include "Support/NoticeRecorder.h"
#include "Support/TemporaryFolder.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <filesystem>
#include <uriparser/Uri.h>

namespace stemvault {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

using Paths = std::vector<std::string>;

/// What a web server makes of a URL's query, as its library reads it.
std::vector<std::pair<std::string, std::string>> decodedQuery(const std::string& url, bool isForm)
{
    const std::string query = url.substr(url.find('?') + 1);
    UriQueryListA* list = nullptr;
    int count = 0;
    EXPECT_EQ(uriDissectQueryMallocExA(&list, &count, query.data(), query.data() + query.size(),
                  isForm ? URI_TRUE : URI_FALSE, URI_BR_DONT_TOUCH),
        URI_SUCCESS);
    std::vector<std::pair<std::string, std::string>> items;
    for (const auto* item = list; item != nullptr; item = item->next)
        items.emplace_back(item->key, item->value);
    uriFreeQueryListA(list);
    return items;
}

class ServiceProviderTests : public testing::Test {
protected:
    std::string perform(const std::string& message, const std::optional<Paths>& filenames)
    {
        std::string error;
        EXPECT_TRUE(provider.perform(message, { filenames }, "ignored", error));
        return error;
    }

    /// Files whose content is their name; a name that ends with a slash is a folder's.
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

    /// Everything under the Projects Root, by its path from there.
    [[nodiscard]] Paths projects() const
    {
        Paths found;
        for (const auto& entry : std::filesystem::recursive_directory_iterator(root))
            found.push_back(entry.path().string().substr(root.size() + 1));
        return found;
    }

    /// Creates a playlist of one file under the name that is typed.
    void create(FakePlatform& desktop, const std::string& typed)
    {
        make({ "Song/a.wav" });
        SettingsStore::shared().setProjectsRootPath(root);
        desktop.dialogs.answerText("Create", typed);
        EXPECT_EQ(perform("createStemvaultPlaylist", paths({ "Song" })), "");
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
        { "a folder by a link to it", { "link/" },
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
            BounceAlertController::shared().queue.emplace_back(FileURL("/s/earlier.wav"), "s");
            desktop.dialogs.answer("Cancel", 0, [&queued] {
                for (const auto& [url, source] : BounceAlertController::shared().queue)
                    queued.push_back(source + "/" + url.lastPathComponent());
            });
        }
        EXPECT_EQ(perform("addToStemvault", paths(row.selection)),
            row.queued.empty() ? "No audio files found in that selection." : "")
            << row.what;
        // A disk lists a folder in an order of its own.
        if (row.selection.size() == 1)
            std::ranges::sort(queued);
        EXPECT_EQ(queued, row.queued) << row.what;
        EXPECT_EQ(BounceAlertController::isMade(), !row.queued.empty()) << row.what;
    }
}

TEST_F(ServiceProviderTests, APlaylistIsAskedForMadeOpenedAndAnnounced)
{
    make({ "Song Demos/a.wav", "Song Demos/b.wav", "Projects/Song Demos/" });
    SettingsStore::shared().setProjectsRootPath(root);
    platform.userDefaults.strings["sv_debug_base_url"] = "http://localhost:8/x?old=1#top";
    platform.dialogs.answerText("Create", "Song Demos");
    EXPECT_EQ(perform("createStemvaultPlaylist", paths({ "Song Demos" })), "");

    Alert expected;
    expected.messageText = "Create Stemvault playlist";
    expected.informativeText = "This will be the new project's folder name.";
    expected.style = AlertStyle::Informational;
    expected.accessoryView = TextField { { 0, 0, 280, 24 }, "Song Demos", true };
    expected.buttons = { "Create", "Cancel" };
    EXPECT_THAT(platform.dialogs.alerts, ElementsAre(expected));
    EXPECT_EQ(platform.application.activations, 1);
    EXPECT_EQ(folder.read("Projects/Song Demos 2/a.wav"), "Song Demos/a.wav");
    EXPECT_EQ(folder.read("Projects/Song Demos 2/b.wav"), "Song Demos/b.wav");
    EXPECT_THAT(platform.workspace.opened,
        ElementsAre("http://localhost:8/x?prefillFolder=/song%20demos%202&title=Song%20Demos"
                    "&autoscan=1#top"));
    const UserNotification& posted = platform.userNotificationCenter.posted.at(0);
    EXPECT_EQ(posted.title, "Stemvault playlist ready");
    EXPECT_EQ(posted.body, "Song Demos — 2 files copied, opening browser…");
    EXPECT_EQ(posted.sound, UserNotificationSound::Default);
    EXPECT_TRUE(UUID::fromString(posted.identifier));
    EXPECT_FALSE(BounceAlertController::isMade()) << "it asks for no permission";
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
        EXPECT_THAT(projects(), IsEmpty()) << "cancelled";
    }
}

TEST_F(ServiceProviderTests, TheTypedNameBecomesAFreeFolderName)
{
    make({ "Projects/Taken", "Projects/Taken 2/" });
    std::filesystem::create_symlink("nowhere", root + "/Taken 3");
    const std::pair<std::string, std::string> rows[] = {
        { "a/b:c", "a-b-c" },
        { " \t\u3000Mix\u00A0\r\n", "Mix" },
        { " \n\u2028", "Song" },
        { "Taken", "Taken 4" },
        { "..", ".. 2" },
        { "\xff\xfe", "\xff\xfe" },
    };
    for (const auto& [typed, name] : rows) {
        FakePlatform desktop;
        create(desktop, typed);
        EXPECT_EQ(folder.read("Projects/" + name + "/a.wav"), "Song/a.wav") << name;
    }
}

TEST_F(ServiceProviderTests, EveryNameDecodesBackWhicheverWayTheQueryIsRead)
{
    const std::pair<std::string, std::string> rows[] = {
        { "ÄÖ İ ΑΣ", "äö i\u0307 ας" },
        { "100% A+B & C=D; #1?", "100% a+b & c=d; #1?" },
        { R"("quoted" 'n' \ <b>|`^{}[])", R"("quoted" 'n' \ <b>|`^{}[])" },
        { "🎛️ line\nbreak %20", "🎛️ line\nbreak %20" },
        { "\xff RAW", "\xff raw" },
    };
    for (const auto& [typed, folderName] : rows) {
        FakePlatform desktop;
        create(desktop, typed);
        const std::string& url = desktop.workspace.opened.at(0);
        for (const bool isForm : { false, true })
            EXPECT_THAT(decodedQuery(url, isForm),
                ElementsAre(std::pair("prefillFolder", "/" + folderName), std::pair("title", typed),
                    std::pair("autoscan", "1")));
        EXPECT_THAT(url, testing::MatchesRegex("https://[a-z.:0-9]+[?][ -~]+"));
    }
}

TEST_F(ServiceProviderTests, EachFailureIsAnsweredInItsPlace)
{
    make({ "Song/a.wav", "Copy/a.wav", "notes.txt" });
    const std::string made = "The folder was created and files were copied to " + root + "/New";
    NoticeRecorder preferences { "openPreferences" };
    const struct {
        const char* message;
        std::string informativeText;
        std::string error;
        std::string body;
        std::function<void(FakePlatform&)> arrange;
        Paths selection { "Song", "Copy/a.wav" };
    } rows[] = {
        { "No Projects Root set",
            "Set a Stemvault Projects Root in Preferences before using Create Stemvault Playlist. "
            "Opening Preferences now.",
            "Set a Stemvault Projects Root in Preferences first.", "",
            [](auto&) { SettingsStore::shared().setProjectsRootPath(std::nullopt); }, { "gone" } },
        { "No audio files found",
            "That selection didn't contain any files with a recognized audio extension.",
            "No audio files found in that selection.", "", [](auto&) {}, { "notes.txt" } },
        { "Couldn't create project folder",
            "The folder “New” couldn’t be made because the folder “gone” doesn’t exist.", "", "",
            [this](auto&) { SettingsStore::shared().setProjectsRootPath(folder.path("gone")); } },
        { "Couldn't create project folder",
            "The folder “New” couldn’t be made because “notes.txt” isn’t a folder.", "", "",
            [this](
                auto&) { SettingsStore::shared().setProjectsRootPath(folder.path("notes.txt")); } },
        { "Couldn't build the Stemvault link",
            made
                + ", but opening the browser failed. Check the Projects Root in "
                  "Preferences.",
            "", "",
            [](auto& desktop) {
                desktop.userDefaults.strings["sv_debug_base_url"] = "http://a b";
            } },
        { "Couldn't open the browser",
            made
                + " 2 — open this link "
                  "manually:\n\nhttp://h?prefillFolder=/new%202&title=New&autoscan=1",
            "", "New — 1 file copied, opening browser…",
            [](auto& desktop) {
                desktop.userDefaults.strings["sv_debug_base_url"] = "http://h";
                desktop.workspace.canOpen = false;
            } },
    };
    for (const auto& row : rows) {
        FakePlatform desktop;
        SettingsStore::shared().setProjectsRootPath(root);
        row.arrange(desktop);
        if (row.error.empty())
            desktop.dialogs.answerText("Create", "New");
        desktop.dialogs.answer("OK");
        EXPECT_EQ(perform("createStemvaultPlaylist", paths(row.selection)), row.error);
        const Alert& alert = desktop.dialogs.alerts.back();
        EXPECT_EQ(alert.messageText, row.message);
        EXPECT_EQ(alert.informativeText, row.informativeText);
        EXPECT_EQ(alert.style, AlertStyle::Warning);
        EXPECT_THAT(alert.buttons, IsEmpty());
        EXPECT_EQ(desktop.application.activations, desktop.dialogs.alerts.size());
        EXPECT_EQ(desktop.userNotificationCenter.bodies(),
            row.body.empty() ? Paths() : Paths { row.body });
    }
    EXPECT_THAT(preferences.notices, ElementsAre(Notification { "openPreferences", {} }));
}

TEST_F(ServiceProviderTests, WhenNoCopySucceedsTheRestGoesOn)
{
    make({ "Song/" });
    std::filesystem::create_symlink("nowhere", folder.path("Song/dangling.wav"));
    SettingsStore::shared().setProjectsRootPath(root);
    platform.dialogs.answerText("Create", "New");
    perform("createStemvaultPlaylist", paths({ "Song" }));
    EXPECT_THAT(projects(), ElementsAre("New"));
    EXPECT_EQ(platform.workspace.opened.size(), 1U);
    EXPECT_THAT(platform.userNotificationCenter.bodies(),
        ElementsAre("New — 0 files copied, opening browser…"));
}

} // namespace
} // namespace stemvault
