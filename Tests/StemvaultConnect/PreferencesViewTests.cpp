#include "StemvaultConnect/BounceWatcher.h"
#include "StemvaultConnect/FolderPresence.h"
#include "StemvaultConnect/PreferencesView.h"
#include "StemvaultConnect/SessionTracker.h"
#include "StemvaultConnect/SettingsStore.h"
#include "Support/FakePlatform.h"
#include "Support/TemporaryFolder.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cstdlib>
#include <iterator>

namespace stemvault {
namespace {

using testing::ElementsAre;

constexpr Font calloutMedium { TextStyle::Callout, FontWeight::Medium };
constexpr Font captionSemibold { TextStyle::Caption, FontWeight::Semibold };
constexpr Font caption { TextStyle::Caption, FontWeight::Regular };
constexpr auto shortened = Text::Lines::OneTruncatedInTheMiddle;

View row(std::vector<View> children, std::optional<double> spacing = {})
{
    return Stack { Stack::Axis::Horizontal, Stack::Alignment::Center, spacing,
        std::move(children) };
}

/// All nodes of one kind in the tree, in reading order.
template <typename Node> std::vector<Node> all(const View& view)
{
    std::vector<Node> found;
    if (const auto* node = std::get_if<Node>(&view.content))
        found.push_back(*node);
    if (const auto* stack = std::get_if<Stack>(&view.content))
        for (const View& child : stack->children)
            std::ranges::move(all<Node>(child), std::back_inserter(found));
    return found;
}

class PreferencesViewTests : public testing::Test {
protected:
    PreferencesViewTests() { setenv("HOME", "/home/u", 1); }

    /// The children of group `index`; dividers are not counted.
    [[nodiscard]] static std::vector<View> group(PreferencesView& view, std::size_t index)
    {
        const View body = view.body();
        const auto& groups = std::get<Stack>(body.content).children;
        EXPECT_EQ(groups.size(), 11U);
        return std::get<Stack>(groups.at(2 * index).content).children;
    }

    static void press(PreferencesView& view, std::size_t groupIndex, std::size_t button)
    {
        all<Button>(Stack { {}, {}, {}, group(view, groupIndex) }).at(button).action();
    }

    static StemvaultFolder add(const std::string& path)
    {
        const StemvaultFolder folder { UUID(), lastPathComponent(path), path };
        SettingsStore::shared().addFolder(folder);
        return folder;
    }

    static std::ptrdiff_t countOf(const std::string& text, const View& view)
    {
        return std::ranges::count(all<Text>(view), text, &Text::string);
    }

    [[nodiscard]] std::vector<std::string> watched() const
    {
        return platform.fileEvents.streams.back()->paths;
    }

    FakePlatform platform;
};

TEST_F(PreferencesViewTests, HasSixGroups)
{
    PreferencesView view;
    const View body = view.body();
    EXPECT_EQ(body.width, 480);
    EXPECT_EQ(std::get<Stack>(body.content).spacing, 0);
    EXPECT_EQ(group(view, 2).at(1).padding.vertical, 4) << "the text where there are no folders";
    EXPECT_EQ(all<Divider>(body).size(), 5U);
    std::vector<double> spacings;
    for (const View& each : std::get<Stack>(body.content).children)
        if (const auto* stack = std::get_if<Stack>(&each.content)) {
            spacings.push_back(stack->spacing.value());
            EXPECT_EQ(each.padding, Padding::standard());
        }
    EXPECT_THAT(spacings, ElementsAre(4, 6, 8, 6, 6, 6));
}

TEST_F(PreferencesViewTests, EachKindOfTextHasItsStyle)
{
    const View body = PreferencesView().body();
    using Style = std::pair<Font, Color>;
    const Style title { { TextStyle::Headline, FontWeight::Regular }, Color::Label };
    const Style noSession { { TextStyle::Callout, FontWeight::Regular }, Color::SecondaryLabel };
    const Style help { caption, Color::SecondaryLabel };
    const Style notSet { caption, Color::TertiaryLabel };
    std::vector<Style> texts;
    for (const Text& text : all<Text>(body))
        texts.emplace_back(text.font, text.color);
    EXPECT_THAT(texts, ElementsAre(title, help, noSession, help, help, notSet, help, notSet, help));
    const auto groupTitle = [](const char* text, const char* symbol) {
        return Label { text, symbol, captionSemibold, Color::SecondaryLabel, true };
    };
    EXPECT_THAT(all<Label>(body),
        ElementsAre(groupTitle("Active Session", "waveform"),
            groupTitle("Stemvault Folders", "folder.fill"),
            groupTitle("Stemvault Projects Root", "folder.badge.gearshape"),
            groupTitle("Always Watch Folder (optional)", "eye"),
            groupTitle("Quick Copy Hotkey", "keyboard")));
    EXPECT_EQ(std::get<Text>(all<Button>(body).at(0).label),
        (Text { "+ Add", captionSemibold, Color::Accent }));
}

TEST_F(PreferencesViewTests, TheSessionFollowsTheTracker)
{
    platform.openFiles.listings[5] = "n/home/u/S/Big Song/Big Song.rpp\n";
    PreferencesView view;
    platform.workspace.launch(5, "com.cockos.reaper", "REAPER");
    SessionTracker::shared().refresh();
    EXPECT_EQ(group(view, 1).at(1),
        row({ Symbol { "circle.dashed", Color::SecondaryLabel, {} },
                Text { "No session detected", { TextStyle::Callout, {} }, Color::SecondaryLabel } },
            6));
    platform.dispatch.settle();
    const View open = row({ Symbol { "checkmark.circle.fill", Color::SystemGreen, {} },
                              Text { "Big Song", calloutMedium },
                              Text { "~/S/Big Song", caption, Color::SecondaryLabel, shortened } },
        6);
    EXPECT_EQ(group(view, 1).at(1), open);
    PreferencesView second;
    EXPECT_EQ(group(second, 1).at(1), open) << "the first drawing already shows it";
}

TEST_F(PreferencesViewTests, ASessionThatIsOpenAlreadyIsInTheFirstDrawing)
{
    SessionTracker::shared().start();
    platform.openSession("/s/Big Song/Big Song.rpp");
    EXPECT_EQ(countOf("/s/Big Song", PreferencesView().body()), 1);
}

TEST_F(PreferencesViewTests, EachFolderHasItsRowAndAMissingOneSaysSo)
{
    const TemporaryFolder disk;
    setenv("HOME", disk.path().c_str(), 1);
    const StemvaultFolder there = add(disk.makeFolder("A & B"));
    const StemvaultFolder gone = add(disk.path("gone"));
    PreferencesView view;
    int drawings = 0;
    view.onNeedsDisplay = [&drawings] { ++drawings; };
    const auto rowOf = [](const StemvaultFolder& folder, const Symbol& symbol,
                           std::vector<View> texts) {
        View made =
            row({ symbol, Stack { Stack::Axis::Vertical, {}, {}, std::move(texts) }, Spacer {},
                Button { Symbol { "minus.circle", Color::SecondaryLabel, {} }, [] {},
                    Button::Style::Plain, {}, "Remove " + folder.name } });
        made.id = folder.id.uuidString();
        made.padding.vertical = 2;
        return made;
    };
    const Symbol plus { "folder.fill.badge.plus", Color::Accent, {} };
    const auto rows = [&view] {
        const Stack list = std::get<Stack>(group(view, 2).at(1).content);
        EXPECT_EQ(list.spacing, 8);
        EXPECT_TRUE(list.isList);
        return list.children;
    };
    const auto present = [&](const StemvaultFolder& folder) {
        return rowOf(folder, plus,
            { Text { folder.name, calloutMedium },
                Text { "~/" + folder.name, caption, Color::SecondaryLabel } });
    };
    static_cast<void>(view.draw());
    EXPECT_THAT(rows(), ElementsAre(present(there), present(gone))) << "before the disk was asked";
    platform.dispatch.settle();
    EXPECT_EQ(drawings, 1) << "one drawing for the one change";
    EXPECT_THAT(rows(),
        ElementsAre(present(there),
            rowOf(gone, Symbol { "folder.fill.badge.questionmark", Color::SystemYellow, {} },
                { Text { gone.name, calloutMedium },
                    Text { "~/" + gone.name, caption, Color::Label },
                    Text { "Folder not found — move it or remove it", caption,
                        Color::SystemYellow } })));
    press(view, 2, 2);
    EXPECT_THAT(SettingsStore::shared().stemvaultFolders(), ElementsAre(there));
    EXPECT_EQ(drawings, 2);
}

TEST_F(PreferencesViewTests, ADriveThatDoesNotAnswerHoldsUpNobodyElse)
{
    using namespace std::chrono_literals;
    for (const char* path : { "/dead/1", "/dead/2", "/gone/3" })
        add(path);
    for (const int drawingsMeanwhile : { 0, 5 }) {
        PreferencesView view;
        const auto warnings = [&view] {
            return countOf("Folder not found — move it or remove it", view.body());
        };
        platform.dispatch.settle();
        static_cast<void>(view.draw());
        const auto stuck = platform.dispatch.holdOldestUtilityWork();
        platform.dispatch.advance(1500ms);
        platform.dispatch.advance(1500ms);
        EXPECT_EQ(warnings(), 1) << "another walk has found that the third is gone";
        for (int i = 0; i < drawingsMeanwhile; ++i)
            static_cast<void>(view.draw());
        platform.dispatch.settle();
        stuck();
        platform.dispatch.settle();
        EXPECT_EQ(warnings(), 3) << "the drive has answered";
    }
}

TEST_F(PreferencesViewTests, NoMoreThanTwoDrivesThatDoNotAnswerAreAskedAtATime)
{
    using namespace std::chrono_literals;
    FolderPresence presence;
    const auto heldUpBy = [&](const std::vector<std::string>& paths) {
        presence.look(paths);
        Work stuck = platform.dispatch.holdOldestUtilityWork();
        platform.dispatch.advance(1500ms);
        platform.dispatch.advance(1500ms);
        return stuck;
    };
    const Work first = heldUpBy({ "/dead/1" });
    heldUpBy({ "/slow/2", "/gone/3" });
    EXPECT_FALSE(presence.isMissing("/gone/3")) << "nobody has asked yet";
    first();
    platform.dispatch.settle();
    EXPECT_TRUE(presence.isMissing("/gone/3")) << "the first has answered";
}

TEST_F(PreferencesViewTests, WritesHomeAsATilde)
{
    const std::pair<std::string, std::string> rows[] = { { "/home/u/D/Mixes", "~/D/Mixes" },
        { "/d/Mixes", "/d/Mixes" }, { "/home/u", "~" },
        { "/backup/home/u/home/u/x", "/backup~~/x" }, { "/home/user", "~ser" }, { "", "" } };
    for (const auto& [path, expected] : rows)
        EXPECT_EQ(homeAbbreviated(path, "/home/u"), expected) << path;
    EXPECT_EQ(homeAbbreviated("/a", ""), "/a");
}

TEST_F(PreferencesViewTests, AddTakesAllChosenFoldersEachWithAWriteOfItsOwn)
{
    PreferencesView view;
    add("/d/A");
    const int before = platform.userDefaults.writes;
    platform.dialogs.chooseAll({ "/d/B", "/d/A", "/" });
    press(view, 2, 0);
    platform.dialogs.choose(std::nullopt);
    press(view, 2, 0);
    std::vector<std::string> added;
    for (const StemvaultFolder& folder : SettingsStore::shared().stemvaultFolders())
        added.push_back(folder.name + " " + folder.path);
    EXPECT_THAT(added, ElementsAre("A /d/A", "B /d/B", "A /d/A", "/ /"));
    EXPECT_EQ(platform.userDefaults.writes, before + 3);
    EXPECT_EQ(platform.dialogs.panels.at(0),
        (OpenPanel { false, true, false, "Add to Stemvault", "", {}, true }));
}

TEST_F(PreferencesViewTests, ChoosingAndClearingBothFolders)
{
    PreferencesView view;
    const SettingsStore& store = SettingsStore::shared();
    const auto setRow = [](const std::string& path, const std::string& which) {
        return row({ Text { path, caption, Color::Label, shortened }, Spacer {},
            Button { Text { "Clear", caption, Color::SecondaryLabel }, [] {}, Button::Style::Plain,
                {}, "Clear the " + which },
            Button { Text { "Choose…" }, [] {}, Button::Style::Bordered, ControlSize::Small,
                "Choose the " + (which.starts_with("p") ? which : "folder to always watch") } });
    };
    platform.dialogs.choose(std::nullopt);
    press(view, 3, 0);
    EXPECT_FALSE(store.projectsRootPath()) << "cancelled";
    platform.dialogs.choose("/home/u/Root");
    press(view, 3, 0);
    EXPECT_EQ(store.projectsRootPath(), "/home/u/Root");
    EXPECT_EQ(group(view, 3).at(2), setRow("~/Root", "projects root"));
    EXPECT_FALSE(BounceWatcher::isMade()) << "the projects root is not watched";
    press(view, 3, 0);
    EXPECT_FALSE(store.projectsRootPath());

    platform.dialogs.choose("/w");
    press(view, 4, 0);
    EXPECT_EQ(store.alwaysWatchPath(), "/w");
    EXPECT_EQ(group(view, 4).at(2), setRow("/w", "folder to always watch"));
    EXPECT_THAT(watched(), ElementsAre("/w"));
    press(view, 4, 0);
    EXPECT_FALSE(store.alwaysWatchPath());
    EXPECT_THAT(platform.fileEvents.streams.back()->state, testing::HasSubstr("released"));
    std::vector<std::string> prompts;
    for (const OpenPanel& panel : platform.dialogs.panels)
        prompts.push_back(panel.prompt);
    EXPECT_THAT(
        prompts, ElementsAre("Set as Projects Root", "Set as Projects Root", "Watch This Folder"));
}

TEST_F(PreferencesViewTests, TheOpenSessionStaysWatchedBesideTheFolderThatAlwaysIs)
{
    SessionTracker::shared().start();
    platform.openSession("/s/S.rpp");
    PreferencesView view;
    platform.dialogs.choose("/w");
    press(view, 4, 0);
    EXPECT_THAT(watched(), ElementsAre("/s", "/w")) << "chosen";
    press(view, 4, 0);
    EXPECT_THAT(watched(), ElementsAre("/s")) << "cleared";
}

TEST_F(PreferencesViewTests, TheSwitchShowsWhatTheDesktopMakesOfIt)
{
    PreferencesView view;
    const auto toggle = [&view] { return all<Toggle>(view.body()).at(0); };
    EXPECT_EQ(toggle(), (Toggle { "Launch at login", false, {}, ControlSize::Small }));
    for (const char* what : { "on", "already on" }) {
        toggle().onChange(true);
        EXPECT_TRUE(toggle().isOn) << what;
    }
    platform.loginItem.isRefused = true;
    toggle().onChange(false);
    EXPECT_TRUE(toggle().isOn) << "refused";
    EXPECT_THAT(platform.loginItem.calls, ElementsAre("register", "unregister"));

    for (const auto status : { LoginItemStatus::NotRegistered, LoginItemStatus::Enabled,
             LoginItemStatus::RequiresApproval, LoginItemStatus::NotFound }) {
        platform.loginItem.current = status;
        EXPECT_EQ(
            all<Toggle>(PreferencesView().body()).at(0).isOn, status == LoginItemStatus::Enabled);
    }
}

TEST_F(PreferencesViewTests, TheHotkeyIsSetUpInTheDesktopsSettings)
{
    platform.workspace.canOpen = false;
    PreferencesView view;
    press(view, 5, 0);
    EXPECT_THAT(platform.workspace.opened,
        ElementsAre("x-apple.systempreferences:com.apple.preference.keyboard?Shortcuts_Services"));
}

} // namespace
} // namespace stemvault
