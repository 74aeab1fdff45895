#include "StemvaultConnect/BounceAlertController.h"
#include "StemvaultConnect/SettingsStore.h"
#include "Support/FakePlatform.h"
#include "Support/NoticeRecorder.h"
#include "Support/TemporaryFolder.h"

#include <gmock/gmock.h>

namespace stemvault {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class BounceAlertControllerTests : public testing::Test {
protected:
    StemvaultFolder addDestination(const std::string& name)
    {
        const StemvaultFolder destination { UUID(), name, folder.makeFolder(name) };
        SettingsStore::shared().addFolder(destination);
        return destination;
    }

    /// A bounce of this name, whose content is its name.
    void queue(const std::string& name, const std::string& sourceFolder = "Song")
    {
        BounceAlertController::shared().queue.emplace_back(
            FileURL(folder.write(sourceFolder + "/" + name, name)), sourceFolder);
    }

    void showAll()
    {
        BounceAlertController::shared().showNextIfIdle();
        platform.dispatch.settle();
    }

    /// The pop-up's items of one of the alerts.
    [[nodiscard]] std::vector<std::string> offered(std::size_t index) const
    {
        return std::get<PopUpButton>(*platform.dialogs.alerts.at(index).accessoryView).items;
    }

    [[nodiscard]] std::vector<std::string> texts() const
    {
        std::vector<std::string> all;
        for (const Alert& alert : platform.dialogs.alerts)
            all.push_back(alert.informativeText);
        return all;
    }

    FakePlatform platform;
    TemporaryFolder folder;
    NoticeRecorder added { "bounceAdded" };
    NoticeRecorder preferences { "openPreferences" };
};

TEST_F(BounceAlertControllerTests, AsksWithEverythingThePromptNeeds)
{
    addDestination("Client A");
    addDestination("Client B");
    queue("Mix.wav");
    platform.dialogs.answer("Skip");
    showAll();

    Alert expected;
    expected.messageText = "Bounce detected";
    expected.informativeText = "Mix.wav\nfrom Song";
    expected.style = AlertStyle::Informational;
    expected.icon = Image { "/resources/AppIcon.icns" };
    expected.accessoryView =
        PopUpButton { { 0, 0, 280, 26 }, { "Client A", "Client B", "New Folder…" } };
    expected.buttons = { "Add", "Skip", "Cancel" };
    EXPECT_THAT(platform.dialogs.alerts, ElementsAre(expected));
    EXPECT_EQ(platform.application.activations, 1);
}

TEST_F(BounceAlertControllerTests, LoadsItsIconAndAsksForPermissionWhenMade)
{
    const struct {
        bool hasResource, isReadable, hasNamed;
        std::optional<Image> expected;
    } rows[] = {
        { true, true, true, Image { "/resources/AppIcon.icns" } },
        { true, false, true, Image { "AppIcon" } },
        { false, true, true, Image { "AppIcon" } },
        { false, true, false, std::nullopt },
    };
    for (const auto& row : rows) {
        FakePlatform desktop;
        desktop.bundle.hasIconResource = row.hasResource;
        desktop.bundle.isIconReadable = row.isReadable;
        desktop.bundle.hasNamedIcon = row.hasNamed;
        desktop.dialogs.answer("Skip");
        BounceAlertController::shared().queue.emplace_back(FileURL("/s/Mix.wav"), "s");
        BounceAlertController::shared().showNextIfIdle();
        EXPECT_EQ(desktop.dialogs.alerts.at(0).icon, row.expected);
        EXPECT_EQ(desktop.userNotificationCenter.requestedOptions, 6U);

        std::uint32_t options = 0;
        desktop.userNotificationCenter.delegate->willPresent(
            {}, [&options](std::uint32_t given) { options = given; });
        EXPECT_EQ(options, 0x12U);
    }
}

TEST_F(BounceAlertControllerTests, EachAnswerDoesWhatItSays)
{
    const struct {
        const char* what;
        std::function<void(FakeDialogs&)> answers;
        std::vector<std::string> prompts; ///< What was asked, by the first line.
        std::vector<std::string> bodies;
    } rows[] = {
        { "Add, one by one, each where it was told to",
            [](FakeDialogs& dialogs) {
                dialogs.answer("Add", 0);
                dialogs.answer("Add", 1);
                dialogs.answer("Add", 0);
            },
            { "1.wav", "2.wav", "3.wav" },
            { "1.wav → Client A", "2.wav → Client B", "3.wav → Client A" } },
        { "Add All", [](FakeDialogs& dialogs) { dialogs.answer("Add All (3)", 1); }, { "1.wav" },
            { "3 files → Client B" } },
        { "Skip, then the rest at once",
            [](FakeDialogs& dialogs) {
                dialogs.answer("Skip");
                dialogs.answer("Add All (2)");
            },
            { "1.wav", "2.wav" }, { "2 files → Client A" } },
        { "Cancel empties the queue", [](FakeDialogs& dialogs) { dialogs.answer("Cancel"); },
            { "1.wav" }, {} },
        { "a cancelled panel drops this file alone",
            [](FakeDialogs& dialogs) {
                dialogs.answer("Add All (3)", 2);
                dialogs.choose(std::nullopt);
                dialogs.answer("Add", -1);
                dialogs.choose(std::nullopt);
                dialogs.answer("Add", 0);
            },
            { "1.wav", "2.wav", "3.wav" }, { "3.wav → Client A" } },
        { "an answer that is no button skips",
            [](FakeDialogs& dialogs) {
                dialogs.answerNumber(ModalResponse::stopped);
                dialogs.answerNumber(1099);
                dialogs.answer("Add");
            },
            { "1.wav", "2.wav", "3.wav" }, { "3.wav → Client A" } },
    };
    for (const auto& row : rows) {
        FakePlatform desktop;
        TemporaryFolder disk;
        for (const char* name : { "Client A", "Client B" })
            SettingsStore::shared().addFolder({ UUID(), name, disk.makeFolder(name) });
        for (const char* name : { "1.wav", "2.wav", "3.wav" })
            BounceAlertController::shared().queue.emplace_back(
                FileURL(disk.write(std::string("Song/") + name, name)), "Song");
        row.answers(desktop.dialogs);
        BounceAlertController::shared().showNextIfIdle();
        desktop.dispatch.settle();

        std::vector<std::string> prompts;
        for (const Alert& alert : desktop.dialogs.alerts)
            prompts.push_back(alert.informativeText.substr(0, 5));
        EXPECT_EQ(prompts, row.prompts) << row.what;
        EXPECT_EQ(desktop.userNotificationCenter.bodies(), row.bodies) << row.what;
    }
}

TEST_F(BounceAlertControllerTests, TellsHowManyWait)
{
    addDestination("Client A");
    for (const char* name : { "1.wav", "2.wav", "3.wav" })
        queue(name);
    for (int i = 0; i < 3; ++i)
        platform.dialogs.answer("Skip");
    showAll();
    EXPECT_THAT(texts(),
        ElementsAre("1.wav\nfrom Song\n\n+ 2 more waiting", "2.wav\nfrom Song\n\n+ 1 more waiting",
            "3.wav\nfrom Song"));
    EXPECT_THAT(
        platform.dialogs.alerts[0].buttons, ElementsAre("Add All (3)", "Add", "Skip", "Cancel"));
}

TEST_F(BounceAlertControllerTests, WhatArrivesWhileThePromptIsOpenWaitsAndGoesAlong)
{
    addDestination("Client A");
    queue("1.wav");
    queue("2.wav");
    platform.dialogs.answer("Add All (2)", 0, [this] {
        queue("late.wav");
        BounceAlertController::shared().showNextIfIdle();
        SettingsStore::shared().setStemvaultFolders({});
        platform.dispatch.settle();
    });
    showAll();
    EXPECT_EQ(platform.dialogs.alerts.size(), 1U);
    EXPECT_THAT(platform.userNotificationCenter.bodies(), ElementsAre("3 files → Client A"));
    EXPECT_EQ(folder.read("Client A/late.wav"), "late.wav");
}

TEST_F(BounceAlertControllerTests, WhatArrivesWhileTheFolderPanelIsOpenWaitsToo)
{
    addDestination("Client A");
    queue("1.wav");
    queue("2.wav");
    platform.dialogs.answer("Add All (2)", 1);
    platform.dialogs.choose(folder.makeFolder("Client N"), [this] {
        queue("late.wav");
        BounceAlertController::shared().showNextIfIdle();
        platform.dispatch.settle();
        EXPECT_EQ(platform.dialogs.alerts.size(), 1U) << "nothing is asked over the panel";
    });
    showAll();
    EXPECT_EQ(platform.dialogs.alerts.size(), 1U);
    EXPECT_THAT(platform.userNotificationCenter.bodies(), ElementsAre("3 files → Client N"));

    queue("next.wav");
    platform.dialogs.answer("Skip");
    showAll();
    EXPECT_THAT(offered(1), ElementsAre("Client A", "Client N", "New Folder…"));
}

TEST_F(BounceAlertControllerTests, CancelDropsWhatArrivedMeanwhile)
{
    addDestination("Client A");
    queue("1.wav");
    platform.dialogs.answer("Cancel", 0, [this] { queue("late.wav"); });
    showAll();
    EXPECT_THAT(BounceAlertController::shared().queue, IsEmpty());
}

TEST_F(BounceAlertControllerTests, ThousandsOfSkipsNeedNoStack)
{
    addDestination("Client A");
    for (int i = 0; i < 50'000; ++i) {
        BounceAlertController::shared().queue.emplace_back(FileURL("/s/Mix.wav"), "s");
        platform.dialogs.answer("Skip");
    }
    showAll();
    EXPECT_EQ(platform.dialogs.alerts.size(), 50'000U);
}

TEST_F(BounceAlertControllerTests, WithoutAnyDestinationItLeadsToThePreferences)
{
    queue("1.wav");
    queue("2.wav");
    platform.dialogs.answer("Open Preferences");
    platform.dialogs.answer("Skip");
    showAll();
    EXPECT_THAT(preferences.notices, ElementsAre(Notification { "openPreferences", {} }));
    EXPECT_EQ(platform.application.activations, 2);
    EXPECT_THAT(texts(), ElementsAre("1.wav\nfrom Song\n\n+ 1 more waiting", "2.wav\nfrom Song"));
    EXPECT_FALSE(platform.dialogs.alerts[0].accessoryView);
    showAll();
    EXPECT_THAT(platform.dialogs.alerts[0].buttons, ElementsAre("Open Preferences", "Skip"));
}

TEST_F(BounceAlertControllerTests, ANewFolderIsChosenInThePanel)
{
    const StemvaultFolder known = addDestination("Client A");
    const struct {
        const char* what;
        std::optional<std::string> projectsRoot;
        std::optional<std::string> chosen;
        std::size_t foldersAfter;
        std::vector<std::string> bodies;
    } rows[] = {
        { "cancelled", {}, {}, 1, {} },
        { "one that is known, by its path alone", "/projects", known.path + "/", 1,
            { "Mix.wav → Client A" } },
        { "a new one", "", folder.makeFolder("Client N"), 2, { "Mix.wav → Client N" } },
    };
    for (const auto& row : rows) {
        FakePlatform desktop;
        SettingsStore::shared().addFolder({ known.id, "Label", known.path });
        SettingsStore::shared().setProjectsRootPath(row.projectsRoot);
        queue("Mix.wav");
        desktop.dialogs.answer("Add", 1);
        desktop.dialogs.choose(row.chosen);
        std::filesystem::remove(folder.path("Client A/Mix.wav"));
        BounceAlertController::shared().showNextIfIdle();
        desktop.dispatch.settle();

        OpenPanel expected;
        expected.canChooseFiles = false;
        expected.canChooseDirectories = true;
        expected.canCreateDirectories = true;
        expected.prompt = "Use This Folder";
        expected.message = "Choose or create a folder for this Stemvault project.";
        if (row.projectsRoot)
            expected.directoryURL = FileURL(*row.projectsRoot);
        EXPECT_THAT(desktop.dialogs.panels, ElementsAre(expected)) << row.what;
        EXPECT_EQ(desktop.application.activations, 2) << row.what;
        EXPECT_EQ(SettingsStore::shared().stemvaultFolders().size(), row.foldersAfter) << row.what;
        EXPECT_EQ(desktop.userNotificationCenter.bodies(), row.bodies) << row.what;
    }
}

TEST_F(BounceAlertControllerTests, WithAProjectsRootAloneOnlyANewFolderIsOffered)
{
    SettingsStore::shared().setProjectsRootPath("");
    queue("Mix.wav");
    platform.dialogs.answer("Skip");
    showAll();
    EXPECT_THAT(offered(0), ElementsAre("New Folder…"));
}

TEST_F(BounceAlertControllerTests, ACopyIsConfirmed)
{
    addDestination("Client A");
    queue("Mix.wav");
    platform.dialogs.answer("Add");
    BounceAlertController::shared().showNextIfIdle();
    platform.dispatch.settleMainQueue();
    platform.dispatch.runOldestUtilityWork();
    platform.dispatch.settleMainQueue();
    EXPECT_EQ(folder.read("Client A/Mix.wav"), "")
        << "neither the look nor the copy on the main thread";
    platform.dispatch.runOldestUtilityWork();
    EXPECT_EQ(added.notices.size(), 1U) << "told where it was copied";

    EXPECT_EQ(folder.read("Client A/Mix.wav"), "Mix.wav");
    EXPECT_THAT(added.notices,
        ElementsAre(Notification {
            "bounceAdded", { { "file", "Mix.wav" }, { "destination", "Client A" } } }));
    const UserNotification& posted = platform.userNotificationCenter.posted.at(0);
    EXPECT_EQ(posted.title, "Added to Stemvault");
    EXPECT_EQ(posted.body, "Mix.wav → Client A");
    EXPECT_EQ(posted.sound, UserNotificationSound::Default);
    EXPECT_TRUE(UUID::fromString(posted.identifier));
}

TEST_F(BounceAlertControllerTests, ATakenNameIsAskedAboutOnce)
{
    addDestination("Client A");
    for (const int answer : { ModalResponse::alertFirstButton + 1, ModalResponse::stopped,
             ModalResponse::alertFirstButton }) {
        const bool isReplaced = answer == ModalResponse::alertFirstButton;
        folder.write("Client A/Mix.wav", "old");
        queue("Mix.wav");
        platform.dialogs.answer("Add");
        platform.dialogs.answerNumber(answer);
        showAll();
        EXPECT_EQ(folder.read("Client A/Mix.wav"), isReplaced ? "Mix.wav" : "old");
        EXPECT_EQ(added.notices.size(), isReplaced ? 1U : 0U);
        EXPECT_EQ(platform.userNotificationCenter.posted.size(), isReplaced ? 1U : 0U);
    }
    Alert expected;
    expected.messageText = "Replace existing file?";
    expected.informativeText = "Mix.wav already exists in \"Client A\".";
    expected.style = AlertStyle::Warning;
    expected.icon = Image { "/resources/AppIcon.icns" };
    expected.buttons = { "Replace", "Cancel" };
    EXPECT_EQ(platform.dialogs.alerts[1], expected);
    EXPECT_EQ(platform.application.activations, 3) << "the question does not come to the front";
}

TEST_F(BounceAlertControllerTests, TwoFilesOfOneNameAreNotTakenForOne)
{
    addDestination("Client A");
    queue("Mix.wav", "Song");
    queue("Mix.wav", "Other Song");
    folder.write("Other Song/Mix.wav", "another");
    platform.dialogs.answer("Add");
    platform.dialogs.answer("Add");
    platform.dialogs.answer("Cancel");
    showAll();
    EXPECT_EQ(platform.dialogs.alerts.back().messageText, "Replace existing file?");
    EXPECT_EQ(folder.read("Client A/Mix.wav"), "Mix.wav") << "free when asked, taken when copied";
}

TEST_F(BounceAlertControllerTests, AFailedReplacementLeavesTheOldFile)
{
    addDestination("Client A");
    folder.write("Client A/Mix.wav", "old");
    queue("Mix.wav");
    platform.dialogs.answer("Add");
    platform.dialogs.answer(
        "Replace", 0, [this] { std::filesystem::remove(folder.path("Song/Mix.wav")); });
    platform.dialogs.answerNumber(ModalResponse::stopped);
    showAll();
    EXPECT_EQ(platform.dialogs.alerts.back().messageText, "Copy failed");
    EXPECT_EQ(folder.read("Client A/Mix.wav"), "old");
}

TEST_F(BounceAlertControllerTests, NamesAreShownHarmlessly)
{
    addDestination("Client A");
    queue("Mix\nfrom me\xff.wav");
    platform.dialogs.answer("Add");
    showAll();
    EXPECT_THAT(texts(), ElementsAre("Mix\uFFFDfrom me\uFFFD.wav\nfrom Song"));
    EXPECT_THAT(platform.userNotificationCenter.bodies(),
        ElementsAre("Mix\uFFFDfrom me\uFFFD.wav → Client A"));
    EXPECT_EQ(folder.read("Client A/Mix\nfrom me\xff.wav"), "Mix\nfrom me\xff.wav");
    EXPECT_EQ(added.notices.at(0).userInfo.at("file"), "Mix\nfrom me\xff.wav");
}

TEST_F(BounceAlertControllerTests, AFailedCopySaysWhyAndPostsNothing)
{
    const StemvaultFolder gone { UUID(), "Gone", folder.path("Gone") };
    SettingsStore::shared().addFolder(gone);
    queue("Mix.wav");
    platform.dialogs.answer("Add");
    platform.dialogs.answerNumber(ModalResponse::alertFirstButton);
    showAll();
    const Alert& alert = platform.dialogs.alerts.at(1);
    EXPECT_EQ(alert.messageText, "Copy failed");
    EXPECT_THAT(alert.informativeText, testing::HasSubstr("Mix.wav"));
    EXPECT_EQ(alert.style, AlertStyle::Warning);
    EXPECT_FALSE(alert.icon);
    EXPECT_THAT(alert.buttons, IsEmpty());
    EXPECT_THAT(added.notices, IsEmpty());
    EXPECT_THAT(platform.userNotificationCenter.posted, IsEmpty());
    EXPECT_EQ(platform.application.activations, 1) << "it does not come to the front";
}

TEST_F(BounceAlertControllerTests, ABatchCountsAndNeverReplaces)
{
    const struct {
        int taken, gone, free;
        std::string body;
    } rows[] = {
        { 0, 0, 3, "3 files → Client A" },
        { 1, 0, 1, "1 file → Client A (1 skipped — already existed)" },
        { 1, 1, 1, "1 file → Client A (2 skipped — already existed)" },
        { 2, 0, 0, "0 files → Client A (2 skipped — already existed)" },
    };
    for (const auto& row : rows) {
        FakePlatform desktop;
        TemporaryFolder disk;
        SettingsStore::shared().addFolder({ UUID(), "Client A", disk.makeFolder("Client A") });
        auto& queue = BounceAlertController::shared().queue;
        const auto enqueue = [&](const std::string& name) {
            queue.emplace_back(FileURL(disk.path("Song/" + name)), "Song");
        };
        for (int i = 0; i < row.taken; ++i) {
            disk.write("Client A/taken" + std::to_string(i), "old");
            disk.write("Song/taken" + std::to_string(i), "new");
            enqueue("taken" + std::to_string(i));
        }
        for (int i = 0; i < row.gone; ++i)
            enqueue("gone" + std::to_string(i));
        for (int i = 0; i < row.free; ++i) {
            disk.write("Song/free" + std::to_string(i), "new");
            enqueue("free" + std::to_string(i));
        }
        NoticeRecorder batches("bounceAdded");
        desktop.dialogs.answerNumber(ModalResponse::alertFirstButton);
        BounceAlertController::shared().showNextIfIdle();
        desktop.dispatch.settle();

        EXPECT_THAT(desktop.userNotificationCenter.bodies(), ElementsAre(row.body));
        EXPECT_THAT(batches.notices,
            ElementsAre(Notification { "bounceAdded", { { "destination", "Client A" } } }));
        EXPECT_EQ(disk.read("Client A/taken0"), row.taken > 0 ? "old" : "");
        EXPECT_EQ(disk.read("Client A/free0"), row.free > 0 ? "new" : "");
    }
}

TEST_F(BounceAlertControllerTests, TheNextPromptDoesNotWaitForACopy)
{
    addDestination("Client A");
    queue("1.wav");
    queue("2.wav");
    platform.dialogs.answer("Add");
    platform.dialogs.answer("Skip", 0, [this] {
        EXPECT_EQ(folder.read("Client A/1.wav"), "");
        platform.dispatch.settle();
        EXPECT_EQ(folder.read("Client A/1.wav"), "1.wav") << "copies go on while a prompt is open";
    });
    showAll();
}

} // namespace
} // namespace stemvault
