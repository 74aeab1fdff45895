#include "StemvaultConnect/PreferencesView.h"

#include "Foundation/HomeDirectory.h"
#include "StemvaultConnect/SessionTrackerObservable.h"
#include "StemvaultConnect/SettingsStore.h"

#include <utility>

namespace stemvault {

namespace {

using Children = std::vector<View>;

constexpr double viewWidth = 480;
constexpr double rowMargin = 2;

constexpr Font headline { TextStyle::Headline, FontWeight::Regular };
constexpr Font callout { TextStyle::Callout, FontWeight::Regular };
constexpr Font calloutMedium { TextStyle::Callout, FontWeight::Medium };
constexpr Font caption { TextStyle::Caption, FontWeight::Regular };
constexpr Font captionSemibold { TextStyle::Caption, FontWeight::Semibold };

View vertical(std::optional<double> spacing, Children children)
{
    return Stack { Stack::Axis::Vertical, Stack::Alignment::Leading, spacing, std::move(children) };
}

View horizontal(std::optional<double> spacing, Children children)
{
    return Stack { Stack::Axis::Horizontal, Stack::Alignment::Center, spacing,
        std::move(children) };
}

View group(double spacing, Children children)
{
    View made = vertical(spacing, std::move(children));
    made.padding = Padding::standard();
    return made;
}

View withMargins(View view, double vertical)
{
    view.padding.vertical = vertical;
    return view;
}

Label groupTitle(const std::string& title, const std::string& symbol)
{
    return { title, symbol, captionSemibold, Color::SecondaryLabel, true };
}

Text helpText(const std::string& text)
{
    return { text, caption, Color::SecondaryLabel };
}

/// A folder's path on one line.
Text pathLine(const std::string& path, Color color)
{
    return { homeAbbreviated(path, homeDirectory()), caption, color,
        Text::Lines::OneTruncatedInTheMiddle };
}

Button smallButton(const std::string& title, Action action, const std::string& help)
{
    return { Text { title }, std::move(action), Button::Style::Bordered, ControlSize::Small, help };
}

/// One setting that names a folder, and the texts around it.
struct FolderSetting {
    const std::optional<std::string>& value;
    std::string notSet;
    Action choose;
    std::string chooseHelp;
    Action clear;
    std::string clearHelp;
};

View folderRow(const FolderSetting& setting)
{
    Children row;
    if (setting.value) {
        row = { pathLine(*setting.value, Color::Label), Spacer {},
            Button { Text { "Clear", caption, Color::SecondaryLabel }, setting.clear,
                Button::Style::Plain, ControlSize::Regular, setting.clearHelp } };
    } else {
        row = { Text { setting.notSet, caption, Color::TertiaryLabel }, Spacer {} };
    }
    row.emplace_back(smallButton("Choose…", setting.choose, setting.chooseHelp));
    return horizontal(std::nullopt, std::move(row));
}

} // namespace

std::string homeAbbreviated(const std::string& path, const std::string& home)
{
    if (home.empty())
        return path;
    std::string text;
    std::size_t from = 0;
    for (auto at = path.find(home); at != std::string::npos; at = path.find(home, from)) {
        text.append(path, from, at - from).append("~");
        from = at + home.size();
    }
    return text.append(path, from);
}

View PreferencesView::body()
{
    View whole = vertical(0,
        { header(), Divider {}, sessionSection(), Divider {}, stemvaultFoldersSection(), Divider {},
            projectsRootSection(), Divider {}, alwaysWatchSection(), Divider {},
            quickCopyHotkeySection() });
    whole.width = viewWidth;
    return whole;
}

View PreferencesView::header()
{
    const View texts = vertical(std::nullopt,
        { Text { "Stemvault Connect", headline },
            helpText("Automatically detects Pro Tools bounces and copies them to your Stemvault "
                     "folder.") });
    const View launchSwitch = Toggle { "Launch at login", launchAtLogin,
        [this](bool isOn) { setLaunchAtLogin(isOn); }, ControlSize::Small };
    return group(4, { horizontal(std::nullopt, { texts, Spacer {}, launchSwitch }) });
}

View PreferencesView::sessionSection()
{
    Children row;
    if (const auto& folder = session.currentSessionFolder()) {
        row = { Symbol { "checkmark.circle.fill", Color::SystemGreen },
            Text { folder->lastPathComponent(), calloutMedium },
            pathLine(folder->path(), Color::SecondaryLabel) };
    } else {
        row = { Symbol { "circle.dashed", Color::SecondaryLabel },
            Text { "No session detected", callout, Color::SecondaryLabel } };
    }
    return group(6, { groupTitle("Active Session", "waveform"), horizontal(6, std::move(row)) });
}

View PreferencesView::stemvaultFoldersSection()
{
    const View titleRow = horizontal(std::nullopt,
        { groupTitle("Stemvault Folders", "folder.fill"), Spacer {},
            Button { Text { "+ Add", captionSemibold, Color::Accent }, [this] { addFolders(); },
                Button::Style::Plain, ControlSize::Regular, "Add Stemvault folders" } });
    if (store.stemvaultFolders().empty())
        return group(8,
            { titleRow,
                withMargins(helpText("No folders configured — add a Stemvault Dropbox folder to "
                                     "route bounces."),
                    4) });
    Stack rows { Stack::Axis::Vertical, Stack::Alignment::Leading, 8, {}, true };
    for (const StemvaultFolder& folder : store.stemvaultFolders())
        rows.children.push_back(stemvaultFolderRow(folder));
    return group(8, { titleRow, std::move(rows) });
}

View PreferencesView::stemvaultFolderRow(const StemvaultFolder& folder)
{
    const bool missing = presence.isMissing(folder.path);
    Children texts = { Text { folder.name, calloutMedium },
        Text { homeAbbreviated(folder.path, homeDirectory()), caption,
            missing ? Color::Label : Color::SecondaryLabel } };
    if (missing)
        texts.emplace_back(
            Text { "Folder not found — move it or remove it", caption, Color::SystemYellow });
    const Symbol symbol = missing ? Symbol { "folder.fill.badge.questionmark", Color::SystemYellow }
                                  : Symbol { "folder.fill.badge.plus", Color::Accent };
    View row = horizontal(std::nullopt,
        { symbol, vertical(std::nullopt, std::move(texts)), Spacer {},
            Button { Symbol { "minus.circle", Color::SecondaryLabel },
                [this, id = folder.id] { store.removeFolder(id); }, Button::Style::Plain,
                ControlSize::Regular, "Remove " + folder.name } });
    row.id = folder.id.uuidString();
    return withMargins(std::move(row), rowMargin);
}

View PreferencesView::projectsRootSection()
{
    return group(6,
        { groupTitle("Stemvault Projects Root", "folder.badge.gearshape"),
            helpText("Used by \"Create Stemvault Playlist\" (Finder → right-click → Services). "
                     "Point this at your local Dropbox App Folder for Stemvault — e.g. "
                     "~/Dropbox/Apps/Stem Vault. New playlist folders are created inside it."),
            folderRow({ store.projectsRootPath(),
                "Not set — required for Create Stemvault Playlist", [this] { pickProjectsRoot(); },
                "Choose the projects root", [this] { store.setProjectsRootPath(std::nullopt); },
                "Clear the projects root" }) });
}

View PreferencesView::alwaysWatchSection()
{
    return group(6,
        { groupTitle("Always Watch Folder (optional)", "eye"),
            helpText("For bounces exported outside the session folder — e.g. a shared Dropbox "
                     "Masters folder."),
            folderRow({ store.alwaysWatchPath(), "Not set", [this] { pickAlwaysWatchFolder(); },
                "Choose the folder to always watch", [this] { setAlwaysWatchPath(std::nullopt); },
                "Clear the folder to always watch" }) });
}

View PreferencesView::quickCopyHotkeySection()
{
    return group(6,
        { groupTitle("Quick Copy Hotkey", "keyboard"),
            helpText("Select file(s) or a folder in Finder, then press your hotkey to copy any "
                     "audio files straight to a Stemvault folder — no session needed. Assign the "
                     "key combo once in System Settings, then point a Stream Deck or SoundFlow "
                     "button at the same combo."),
            smallButton(
                "Set Up Hotkey…", [] { openServicesShortcutsPane(); }, "") });
}

} // namespace stemvault
