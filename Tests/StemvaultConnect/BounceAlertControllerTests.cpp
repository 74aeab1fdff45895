#include "Platform/FileEvents.h"
#include "StemvaultConnect/BounceAlertController.h"
#include "StemvaultConnect/BounceWatcher.h"
#include "StemvaultConnect/SettingsStore.h"
#include "Support/FakePlatform.h"
#include "Support/NoticeRecorder.h"
#include "Support/TemporaryFolder.h"
#include "Support/WrittenFile.h"

#include <gmock/gmock.h>

#include <csignal>
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <unistd.h>

namespace stemvault {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::IsEmpty;

using Texts = std::vector<std::string>;

const Image icon { "/resources/AppIcon.icns" };

/// A desktop, a disk and the controller's queue. A test whose cases must not affect each other
/// creates one per case.
struct Stage {
    Stage() { addDestination("Client A"); }

    void addDestination(const std::string& name) const
    {
        SettingsStore::shared().addFolder({ UUID(), name, folder.makeFolder(name) });
    }

    /// Queues files with these names; the content of each is its name.
    void queue(const Texts& names, const std::string& sourceFolder = "Song") const
    {
        const std::string below = sourceFolder + "/";
        for (const std::string& name : names)
            BounceAlertController::shared().queue.push_back(
                { FileURL(folder.write(below + name, name)), sourceFolder });
    }

    /// Shows the prompts for the whole queue; the user presses these buttons in turn.
    void showAll(const Texts& buttons = {})
    {
        for (const std::string& button : buttons)
            dialogs.answer(button);
        BounceAlertController::shared().showNextIfIdle();
        platform.dispatch.settle();
    }

    FakePlatform platform;
    FakeDialogs& dialogs = platform.dialogs;
    FakeUserNotificationCenter& notifications = platform.userNotificationCenter;
    TemporaryFolder folder;
    NoticeRecorder added { "bounceAdded" };
};

struct BounceAlertControllerTests : testing::Test, Stage { };

TEST_F(BounceAlertControllerTests, AsksWithEverythingThePromptNeeds)
{
    addDestination("Client B");
    queue({ "1.wav", "2.wav", "3.wav" });
    showAll({ "Skip", "Skip", "Skip" });
    EXPECT_EQ(dialogs.alerts.at(2),
        (Alert { "Bounce detected", "3.wav\nfrom Song", AlertStyle::Informational, icon,
            PopUpButton { { 0, 0, 280, 26 }, { "Client A", "Client B", "New Folder…" } },
            { "Add", "Skip", "Cancel" } }));
    EXPECT_THAT(dialogs.alerts[0].buttons, ElementsAre("Add All (3)", "Add", "Skip", "Cancel"));
    EXPECT_THAT(dialogs.texts(),
        ElementsAre("1.wav\nfrom Song\n\n+ 2 more waiting", "2.wav\nfrom Song\n\n+ 1 more waiting",
            "3.wav\nfrom Song"));
    EXPECT_THAT(dialogs.activationsBefore, ElementsAre(1, 2, 3))
        << "the program comes to the front before each prompt";
}

TEST_F(BounceAlertControllerTests, LoadsItsIconAndAsksForPermissionWhenMade)
{
    const std::pair<std::set<std::string>, std::optional<Image>> rows[] = {
        { {}, icon },
        { { icon.source }, Image { "AppIcon" } },
        { { "AppIcon.icns" }, Image { "AppIcon" } },
        { { "AppIcon.icns", "AppIcon" }, std::nullopt },
    };
    for (const auto& [missing, expected] : rows) {
        Stage stage;
        stage.platform.bundle.missing = missing;
        stage.queue({ "Mix.wav" });
        stage.showAll({ "Skip" });
        EXPECT_EQ(stage.dialogs.alerts.at(0).icon, expected);
        EXPECT_EQ(stage.notifications.requestedOptions, 6U);
        std::uint32_t options = 0;
        stage.notifications.delegate->willPresent(
            {}, [&](std::uint32_t given) { options = given; });
        EXPECT_EQ(options, 0x12U);
    }
}

TEST_F(BounceAlertControllerTests, EachAnswerDoesWhatItSays)
{
    const struct {
        const char* what;
        std::vector<std::pair<std::string, int>>
            answers; ///< Button and item; without a button, the response.
        int cancelledPanels;
        Texts bodies;
    } rows[] = {
        { "Add, one by one, each where it was told to",
            { { "Add", 0 }, { "Add", 1 }, { "Add", 0 } }, 0,
            { "1.wav → Client A", "2.wav → Client B", "3.wav → Client A" } },
        { "Add All", { { "Add All (3)", 1 } }, 0, { "3 files → Client B" } },
        { "Skip, then the rest at once", { { "Skip", 0 }, { "Add All (2)", 0 } }, 0,
            { "2 files → Client A" } },
        { "Cancel empties the queue", { { "Cancel", 0 } }, 0, {} },
        { "a cancelled panel drops only this file",
            { { "Add All (3)", 2 }, { "Add", -1 }, { "Add", 0 } }, 2, { "3.wav → Client A" } },
        { "a response that belongs to no button skips",
            { { "", ModalResponse::stopped }, { "", 1099 }, { "Add", 0 } }, 0,
            { "3.wav → Client A" } },
    };
    for (const auto& row : rows) {
        Stage stage;
        stage.addDestination("Client B");
        stage.queue({ "1.wav", "2.wav", "3.wav" });
        for (const auto& [title, number] : row.answers)
            title.empty() ? stage.dialogs.answerNumber(number)
                          : stage.dialogs.answer(title, number);
        for (int i = 0; i < row.cancelledPanels; ++i)
            stage.dialogs.choose(std::nullopt);
        stage.showAll();
        EXPECT_EQ(stage.notifications.bodies(), row.bodies) << row.what;
    }
}

TEST_F(BounceAlertControllerTests, WhatArrivesWhileThePromptIsOpenWaitsAndGoesAlong)
{
    queue({ "1.wav", "2.wav" });
    dialogs.answer("Add All (2)", 0, [this] {
        queue({ "late.wav" });
        SettingsStore::shared().setStemvaultFolders({});
        showAll();
    });
    showAll();
    EXPECT_EQ(dialogs.alerts.size(), 1U);
    EXPECT_THAT(notifications.bodies(), ElementsAre("3 files → Client A"));
    EXPECT_EQ(folder.read("Client A/late.wav"), "late.wav");
}

TEST_F(BounceAlertControllerTests, WhatArrivesWhileTheFolderPanelIsOpenWaitsToo)
{
    queue({ "1.wav", "2.wav" });
    dialogs.answer("Add All (2)", 1);
    dialogs.choose(folder.makeFolder("Client N"), [this] {
        queue({ "late.wav" });
        showAll();
        EXPECT_EQ(dialogs.alerts.size(), 1U) << "nothing is asked over the panel";
    });
    showAll();
    EXPECT_THAT(notifications.bodies(), ElementsAre("3 files → Client N"));
}

TEST_F(BounceAlertControllerTests, ThousandsOfSkipsNeedNoStack)
{
    for (int i = 0; i < 50'000; ++i) {
        BounceAlertController::shared().queue.push_back({ FileURL("/s/Mix.wav"), "s" });
        dialogs.answer("Skip");
    }
    showAll();
    EXPECT_EQ(dialogs.alerts.size(), 50'000U);
}

TEST_F(BounceAlertControllerTests, WithoutAnyDestinationItLeadsToThePreferences)
{
    const NoticeRecorder preferences { "openPreferences" };
    SettingsStore::shared().setStemvaultFolders({});
    queue({ "1.wav", "2.wav" });
    showAll({ "Open Preferences", "Skip" });
    EXPECT_THAT(preferences.notices, ElementsAre(Notification { "openPreferences", {} }));
    EXPECT_EQ(platform.application.activations, 2);
    EXPECT_EQ(dialogs.alerts.at(0),
        (Alert { "Bounce detected", "1.wav\nfrom Song\n\n+ 1 more waiting",
            AlertStyle::Informational, icon, {}, { "Open Preferences", "Skip" } }));

    SettingsStore::shared().setProjectsRootPath("");
    queue({ "Mix.wav" });
    showAll({ "Skip" });
    EXPECT_EQ(dialogs.alerts.back().accessoryView,
        AccessoryView(PopUpButton { { 0, 0, 280, 26 }, { "New Folder…" } }))
        << "with a projects root alone";
}

TEST_F(BounceAlertControllerTests, ANewFolderIsChosenInThePanel)
{
    const struct {
        const char* what;
        std::optional<std::string> projectsRoot, chosen;
        std::size_t foldersAfter;
        Texts bodies;
    } rows[] = {
        { "cancelled", {}, {}, 1, {} },
        { "a known one, recognised by its path", "/projects", "Client A/", 1,
            { "Mix.wav → Client A" } },
        { "a new one", "", "Client N", 2, { "Mix.wav → Client N" } },
    };
    for (const auto& row : rows) {
        Stage stage;
        StemvaultFolder known = SettingsStore::shared().stemvaultFolders().front();
        known.name = "Label";
        SettingsStore::shared().setStemvaultFolders({ known });
        SettingsStore::shared().setProjectsRootPath(row.projectsRoot);
        stage.queue({ "Mix.wav" });
        stage.dialogs.answer("Add", 1);
        stage.dialogs.choose(
            row.chosen ? std::optional(stage.folder.makeFolder(*row.chosen)) : std::nullopt);
        stage.showAll();

        OpenPanel expected { false, true, true, "Use This Folder",
            "Choose or create a folder for this Stemvault project.", {} };
        if (row.projectsRoot)
            expected.directoryURL = FileURL(*row.projectsRoot);
        EXPECT_THAT(stage.dialogs.panels, ElementsAre(expected)) << row.what;
        EXPECT_EQ(stage.platform.application.activations, 2) << row.what;
        EXPECT_EQ(SettingsStore::shared().stemvaultFolders().size(), row.foldersAfter) << row.what;
        EXPECT_EQ(stage.notifications.bodies(), row.bodies) << row.what;
    }
}

TEST_F(BounceAlertControllerTests, ACopyIsConfirmedAndHoldsUpNoPrompt)
{
    queue({ "Mix.wav", "Next.wav" });
    dialogs.answer("Add");
    dialogs.answer("Skip", 0, [this] {
        platform.dispatch.settleMainQueue();
        EXPECT_EQ(folder.read("Client A/Mix.wav"), "") << "not on the main thread";
        platform.dispatch.runOldestUtilityWork();
        EXPECT_EQ(folder.read("Client A/Mix.wav"), "Mix.wav") << "while a prompt is open";
        EXPECT_THAT(added.notices,
            ElementsAre(Notification {
                "bounceAdded", { { "file", "Mix.wav" }, { "destination", "Client A" } } }))
            << "posted from the thread that copied";
    });
    showAll();
    const std::string identifier = notifications.posted.at(0).identifier;
    EXPECT_TRUE(UUID::fromString(identifier));
    EXPECT_THAT(notifications.posted,
        ElementsAre(UserNotification { identifier, "Added to Stemvault", "Mix.wav → Client A",
            UserNotificationSound::Default }));
}

TEST_F(BounceAlertControllerTests, WhatWasAskedForIsCopiedThoughTheProgramEnds)
{
    queue({ "Mix.wav", "1.wav", "2.wav" });
    for (const char* button : { "Add", "Add All (2)" })
        dialogs.answer(button);
    BounceAlertController::shared().showNextIfIdle();
    EXPECT_THAT(folder.names("Client A"), IsEmpty());
    platform.dispatch.endProgram();
    EXPECT_THAT(folder.names("Client A"), ElementsAre("1.wav", "2.wav", "Mix.wav"));
}

TEST_F(BounceAlertControllerTests, AFileIsAtRestWhenNobodyWritesItAnyMore)
{
    const WallTime now = platform.dispatch.now();
    const struct {
        const char* what;
        FileManager::SourceState source;
        bool expected;
    } rows[] = {
        { "closed, written a second ago", { Writers::None, 10, now - 1s }, true },
        { "closed, written just now", { Writers::None, 10, now - 999ms }, false },
        { "nobody can tell who writes it", { Writers::Unknown, 10, now - 1s }, true },
        { "dated by a clock slightly ahead", { Writers::None, 10, now + 999ms }, false },
        { "dated by a clock far ahead", { Writers::None, 10, now + 1h }, true },
        { "open, written a while ago", { Writers::Some, 5000, now - 299s }, false },
        { "open, left alone for minutes", { Writers::Some, 5000, now - 5min }, true },
        { "open, with only a header", { Writers::Some, 4096, now - 5min }, false },
    };
    for (const auto& row : rows)
        EXPECT_EQ(BounceWatcher::isAtRest(row.source, now), row.expected) << row.what;
}

TEST_F(BounceAlertControllerTests, AFileThatIsStillWrittenIsCopiedOnceItIsAtRest)
{
    for (const bool isReplacing : { false, true }) {
        queue({ "Mix.wav" });
        WrittenFile mix(platform.dispatch, folder.path("Song/Mix.wav"));
        showAll(isReplacing ? Texts { "Add", "Replace" } : Texts { "Add" });
        EXPECT_EQ(dialogs.alerts.back().messageText,
            isReplacing ? "Replace existing file?" : "Bounce detected")
            << "the question comes before the file is at rest";
        platform.dispatch.advance(1min);
        mix.write(isReplacing ? "new mix" : "the mix");
        mix.close();
        platform.dispatch.advance(999ms);
        EXPECT_EQ(notifications.posted.size(), isReplacing ? 1U : 0U);
        platform.dispatch.advance(501ms);
        EXPECT_EQ(notifications.posted.size(), isReplacing ? 2U : 1U);
        EXPECT_EQ(folder.read("Client A/Mix.wav"), isReplacing ? "new mix" : "the mix");
    }
}

TEST_F(BounceAlertControllerTests, AFileThatNeverComesToRestIsReported)
{
    queue({ "Mix\n.wav" });
    const WrittenFile mix(platform.dispatch, folder.path("Song/Mix\n.wav"));
    showAll({ "Add" });
    platform.dispatch.advance(10min - 1s);
    EXPECT_EQ(dialogs.alerts.size(), 1U);
    dialogs.answer("OK");
    platform.dispatch.advance(10min);
    EXPECT_EQ(dialogs.alerts.back(),
        (Alert { "Copy failed",
            "“Mix\uFFFD.wav” couldn’t be copied because another program is still writing it.",
            AlertStyle::Warning, {}, {}, {} }));
    EXPECT_EQ(dialogs.alerts.size(), 2U);
    EXPECT_THAT(folder.names("Client A"), IsEmpty());
}

/// Changes a file's date ten thousand times a second, or whenever a write exceeds the size limit,
/// in signal handlers on the copying thread. A date in the future does not prevent a copy.
class Redating {
public:
    explicit Redating(const std::string& file)
    {
        path = file;
        seconds = inTheFuture;
        struct sigaction action { };
        action.sa_handler = [](int) { redate(); };
        action.sa_flags = SA_RESTART;
        EXPECT_EQ(::sigaction(SIGALRM, &action, nullptr), 0);
        EXPECT_EQ(::sigaction(SIGXFSZ, &action, nullptr), 0);
        redate();
    }
    ~Redating()
    {
        keepOn(0);
        limitFiles(RLIM_INFINITY);
        ::signal(SIGALRM, SIG_DFL);
        ::signal(SIGXFSZ, SIG_DFL);
    }
    static void keepOn(suseconds_t interval)
    {
        const itimerval times { { 0, interval }, { 0, interval } };
        EXPECT_EQ(::setitimer(ITIMER_REAL, &times, nullptr), 0);
    }
    static void limitFiles(rlim_t size)
    {
        const rlimit limit { size, RLIM_INFINITY };
        EXPECT_EQ(::setrlimit(RLIMIT_FSIZE, &limit), 0);
    }
    /// Sets the date to this time on later changes.
    static void dateAs(WallTime now)
    {
        seconds = std::chrono::floor<std::chrono::seconds>(now.time_since_epoch()).count();
    }

private:
    static void redate()
    {
        const timespec date { seconds, ++changes };
        const timespec times[] = { date, date };
        ::utimensat(AT_FDCWD, path.c_str(), times, 0);
    }

    static inline std::string path;
    static constexpr time_t inTheFuture = 4'000'000'000;
    static inline time_t seconds = inTheFuture;
    static inline long changes = 0;
};

const std::string longContent(4 << 20, 'm');

TEST_F(BounceAlertControllerTests, ACopyThatItsSourceSpoiltByChangingIsMadeOnceThatEnds)
{
    for (const bool isBatch : { false, true }) {
        Stage stage;
        stage.queue({ "1.wav", "2.wav" });
        const Redating mix(stage.folder.write("Song/1.wav", longContent));
        Redating::keepOn(100);
        stage.showAll(isBatch ? Texts { "Add All (2)" } : Texts { "Add", "Skip" });
        stage.platform.dispatch.advance(1s);
        EXPECT_FALSE(stage.folder.names("Client A").contains("1.wav"));
        EXPECT_THAT(stage.notifications.posted, IsEmpty());
        Redating::keepOn(0);
        stage.platform.dispatch.advance(1s);
        EXPECT_EQ(stage.folder.read("Client A/1.wav"), longContent);
        EXPECT_THAT(stage.notifications.bodies(),
            ElementsAre(isBatch ? "2 files → Client A" : "1.wav → Client A"));
    }
}

TEST_F(BounceAlertControllerTests, ASourceThatSpoilsEveryCopyIsReported)
{
    queue({ "Mix.wav" });
    {
        const WrittenFile mix(platform.dispatch, folder.path("Song/Mix.wav"));
        showAll({ "Add" });
        platform.dispatch.advance(10min - 1s);
    }
    const Redating mix(folder.write("Song/Mix.wav", longContent));
    Redating::keepOn(100);
    dialogs.answer("OK");
    platform.dispatch.advance(3s);
    EXPECT_EQ(dialogs.texts().back(),
        "“Mix.wav” couldn’t be copied because it kept changing while it was being copied.");
}

TEST_F(BounceAlertControllerTests, ACopyThatFailedOtherwiseIsNotMadeAgainThoughItsSourceChanged)
{
    for (const bool isBatch : { false, true }) {
        Stage stage;
        stage.queue({ "1.wav", "2.wav" });
        const Redating mix(stage.folder.write("Song/1.wav", longContent));
        Redating::dateAs(stage.platform.dispatch.now());
        Redating::limitFiles(1 << 20);
        stage.showAll(isBatch ? Texts { "Add All (2)" } : Texts { "Add", "Skip", "OK" });
        EXPECT_FALSE(stage.folder.names("Client A").contains("1.wav"));
        if (isBatch)
            EXPECT_THAT(stage.notifications.bodies(),
                ElementsAre("1 file → Client A (1 skipped — already existed)"));
        else
            EXPECT_THAT(stage.dialogs.texts().back(), testing::HasSubstr("too large"));
    }
}

TEST_F(BounceAlertControllerTests, ABatchWaitsForItsFilesInTheirOrder)
{
    for (const bool comesToRest : { true, false }) {
        Stage stage;
        stage.queue({ "1.wav", "2.wav" });
        stage.queue({ "1.wav" }, "Other Song");
        stage.folder.write("Other Song/1.wav", "another");
        WrittenFile first(stage.platform.dispatch, stage.folder.path("Song/1.wav"));
        stage.showAll({ "Add All (3)" });
        EXPECT_THAT(stage.folder.names("Client A"), ElementsAre("2.wav"));
        EXPECT_THAT(stage.notifications.posted, IsEmpty());
        if (comesToRest)
            first.close();
        stage.platform.dispatch.advance(comesToRest ? 2s : 11min);
        EXPECT_THAT(stage.notifications.bodies(),
            ElementsAre(comesToRest ? "2 files → Client A (1 skipped — already existed)"
                                    : "1 file → Client A (2 skipped — already existed)"));
        EXPECT_EQ(stage.folder.read("Client A/1.wav"), comesToRest ? "1.wav" : "");
    }
}

TEST_F(BounceAlertControllerTests, ABatchDoesNotWaitForAFileWhoseNameIsTaken)
{
    folder.write("Client A/1.wav", "old");
    queue({ "1.wav", "2.wav" });
    const WrittenFile first(platform.dispatch, folder.path("Song/1.wav"));
    showAll({ "Add All (2)" });
    EXPECT_THAT(
        notifications.bodies(), ElementsAre("1 file → Client A (1 skipped — already existed)"));
    EXPECT_EQ(folder.read("Client A/1.wav"), "old");
}

TEST_F(BounceAlertControllerTests, ACopyIntoAWatchedFolderIsNoBounce)
{
    const std::string watched = folder.path("Client A");
    BounceWatcher& watcher = BounceWatcher::shared();
    Texts reported;
    watcher.onBounceDetected = [&](const FileURL& file, const auto&, const auto&) {
        reported.push_back(file.lastPathComponent());
    };
    watcher.update(FileURL(watched), std::nullopt);
    const auto deliver = [&](const std::string& name) {
        platform.fileEvents.deliver(
            { watched + "/" + name }, { FileEventFlag::ItemIsFile | FileEventFlag::ItemCreated });
        platform.dispatch.advance(3s);
        return std::exchange(reported, {});
    };
    queue({ "1.wav", "2.wav", "3.wav" });
    showAll({ "Add", "Add All (2)" });
    for (const char* name : { "1.wav", "2.wav", "3.wav" }) {
        EXPECT_THAT(deliver(name), IsEmpty()) << "from a drive that reports every change alike";
        const std::string sameLength(folder.read(std::string("Client A/") + name).size(), '#');
        folder.write(std::string("Client A/") + name, sameLength);
        EXPECT_THAT(deliver(name), ElementsAre(name)) << "recorded again";
    }
}

TEST_F(BounceAlertControllerTests, ATakenNameIsAskedAboutOnce)
{
    for (const int answer : { ModalResponse::alertFirstButton + 1, ModalResponse::stopped,
             ModalResponse::alertFirstButton }) {
        const bool isReplaced = answer == ModalResponse::alertFirstButton;
        folder.write("Client A/Mix.wav", "old");
        queue({ "Mix.wav" });
        dialogs.answer("Add");
        dialogs.answerNumber(answer);
        showAll();
        EXPECT_EQ(folder.read("Client A/Mix.wav"), isReplaced ? "Mix.wav" : "old");
        EXPECT_EQ(added.notices.size(), isReplaced ? 1U : 0U);
        EXPECT_EQ(notifications.posted.size(), isReplaced ? 1U : 0U);
    }
    EXPECT_EQ(dialogs.alerts[1],
        (Alert { "Replace existing file?", "Mix.wav already exists in \"Client A\".",
            AlertStyle::Warning, icon, {}, { "Replace", "Cancel" } }));
    EXPECT_EQ(platform.application.activations, 3)
        << "the question does not bring the program to the front";
}

TEST_F(BounceAlertControllerTests, TwoFilesOfOneNameAreNotTakenForOne)
{
    queue({ "Mix.wav" });
    queue({ "Mix.wav" }, "Other Song");
    folder.write("Other Song/Mix.wav", "another");
    showAll({ "Add", "Add", "Cancel" });
    EXPECT_EQ(dialogs.alerts.back().messageText, "Replace existing file?");
    EXPECT_EQ(folder.read("Client A/Mix.wav"), "Mix.wav")
        << "the name was free at the prompt and taken at the copy";
}

TEST_F(BounceAlertControllerTests, ANameThatIsTakenDuringTheCopyIsAskedAbout)
{
    queue({ "Mix.wav" });
    folder.write("Song/Mix.wav", longContent);
    static std::string copy;
    copy = folder.path("Client A/Mix.wav");
    // The copying thread gets this signal when the copy exceeds the size limit.
    ::signal(SIGXFSZ, [](int) { ::close(::creat(copy.c_str(), S_IRUSR | S_IWUSR)); });
    Redating::limitFiles(1 << 20);
    showAll({ "Add", "Cancel" });
    Redating::limitFiles(RLIM_INFINITY);
    ::signal(SIGXFSZ, SIG_DFL);
    EXPECT_EQ(dialogs.alerts.back().messageText, "Replace existing file?");
    EXPECT_EQ(dialogs.alerts.size(), 2U);
}

TEST_F(BounceAlertControllerTests, AFailedCopySaysWhyAndLeavesTheOldFile)
{
    for (const std::string old : { "", "old" }) {
        Stage stage;
        stage.queue({ "Mix.wav" });
        stage.dialogs.answer(
            "Add", 0, [&] { std::filesystem::remove(stage.folder.path("Song/Mix.wav")); });
        if (!old.empty()) {
            stage.folder.write("Client A/Mix.wav", old);
            stage.dialogs.answer("Replace");
        }
        stage.dialogs.answer("OK");
        stage.showAll();
        const std::string reason = stage.dialogs.texts().back();
        EXPECT_THAT(reason, testing::HasSubstr("Mix.wav"));
        EXPECT_EQ(stage.dialogs.alerts.back(),
            (Alert { "Copy failed", reason, AlertStyle::Warning, {}, {}, {} }));
        EXPECT_EQ(stage.folder.read("Client A/Mix.wav"), old);
        EXPECT_THAT(stage.added.notices, IsEmpty());
        EXPECT_THAT(stage.notifications.posted, IsEmpty());
        EXPECT_EQ(stage.platform.application.activations, 1)
            << "the failure does not bring the program to the front";
    }
}

TEST_F(BounceAlertControllerTests, NamesAreShownHarmlessly)
{
    SettingsStore::shared().setStemvaultFolders({});
    addDestination("Client\nA");
    const std::string name = "Mix\nfrom me\xff.wav";
    queue({ name, name }, "So\nng");
    showAll({ "Add", "Add", "Cancel" });
    EXPECT_THAT(dialogs.texts(),
        ElementsAre("Mix\uFFFDfrom me\uFFFD.wav\nfrom So\uFFFDng\n\n+ 1 more waiting",
            "Mix\uFFFDfrom me\uFFFD.wav\nfrom So\uFFFDng",
            "Mix\uFFFDfrom me\uFFFD.wav already exists in \"Client\uFFFDA\"."));
    EXPECT_THAT(notifications.bodies(), ElementsAre("Mix\uFFFDfrom me\uFFFD.wav → Client\uFFFDA"));
    EXPECT_EQ(folder.read("Client\nA/" + name), name);
    EXPECT_EQ(added.notices.at(0).userInfo.at("file"), name);

    queue({ "1.wav", "2.wav" });
    showAll({ "Add All (2)" });
    EXPECT_EQ(notifications.bodies().back(), "2 files → Client\uFFFDA");
}

TEST_F(BounceAlertControllerTests, ABatchCountsAndNeverReplaces)
{
    const struct {
        Texts taken, gone, free;
        std::string body;
    } rows[] = {
        { {}, {}, { "1", "2", "3" }, "3 files → Client A" },
        { { "1" }, { "2" }, { "3" }, "1 file → Client A (2 skipped — already existed)" },
        { { "1", "2" }, {}, {}, "0 files → Client A (2 skipped — already existed)" },
    };
    for (const auto& row : rows) {
        Stage stage;
        for (const Texts& names : { row.taken, row.gone, row.free })
            stage.queue(names);
        for (const std::string& name : row.taken)
            stage.folder.write("Client A/" + name, "old");
        for (const std::string& name : row.gone)
            std::filesystem::remove(stage.folder.path("Song/" + name));
        stage.dialogs.answerNumber(ModalResponse::alertFirstButton);
        stage.showAll();

        EXPECT_THAT(stage.notifications.bodies(), ElementsAre(row.body));
        EXPECT_THAT(stage.added.notices,
            ElementsAre(Notification { "bounceAdded", { { "destination", "Client A" } } }));
        for (const std::string& name : row.taken)
            EXPECT_EQ(stage.folder.read("Client A/" + name), "old");
        for (const std::string& name : row.free)
            EXPECT_EQ(stage.folder.read("Client A/" + name), name);
    }
}

} // namespace
} // namespace stemvault
