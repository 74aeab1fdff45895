#include "StemvaultConnect/BounceAlertController.h"

#include "Foundation/NotificationCenter.h"
#include "Foundation/UnicodeText.h"
#include "Platform/Platform.h"
#include "StemvaultConnect/Prompts.h"
#include "StemvaultConnect/SettingsStore.h"

#include <algorithm>
#include <iterator>

namespace stemvault {

namespace {

constexpr Frame popUpFrame { 0, 0, 280, 26 };

std::optional<Image> loadAppIcon()
{
    const Bundle& bundle = Platform::current().bundle;
    if (const auto path = bundle.pathForResource("AppIcon", "icns"))
        if (auto image = bundle.imageWithContentsOfFile(*path))
            return image;
    return bundle.imageNamed("AppIcon");
}

std::string informativeText(const BounceAlertController::Entry& entry, std::size_t waiting)
{
    std::string text =
        printable(entry.file.lastPathComponent()) + "\nfrom " + printable(entry.sourceFolder);
    if (waiting > 0)
        text += "\n\n+ " + std::to_string(waiting) + " more waiting";
    return text;
}

PopUpButton destinationPopUp(const std::vector<StemvaultFolder>& folders)
{
    PopUpButton popUp { popUpFrame, {} };
    for (const StemvaultFolder& folder : folders)
        popUp.items.push_back(folder.name);
    popUp.items.emplace_back("New Folder…");
    return popUp;
}

enum class Choice { AddAll, Add, Skip, Cancel };

struct PromptButton {
    Choice choice;
    std::string title;
};

std::vector<PromptButton> promptButtons(std::size_t waiting)
{
    std::vector<PromptButton> buttons;
    if (waiting > 0)
        buttons.push_back({ Choice::AddAll, "Add All (" + std::to_string(waiting + 1) + ")" });
    buttons.insert(buttons.end(),
        { { Choice::Add, "Add" }, { Choice::Skip, "Skip" }, { Choice::Cancel, "Cancel" } });
    return buttons;
}

/// The button that was pressed; Skip for an alert that was stopped.
Choice choiceOf(const std::vector<PromptButton>& buttons, int response)
{
    const int index = response - ModalResponse::alertFirstButton;
    if (index < 0 || index >= static_cast<int>(buttons.size()))
        return Choice::Skip;
    return buttons[static_cast<std::size_t>(index)].choice;
}

OpenPanel newFolderPanel(const std::optional<std::string>& projectsRoot)
{
    OpenPanel panel = folderPanel("Use This Folder");
    panel.canCreateDirectories = true;
    panel.message = "Choose or create a folder for this Stemvault project.";
    if (projectsRoot)
        panel.directoryURL = FileURL(*projectsRoot);
    return panel;
}

/// The folder that was selected in the pop-up button; absent for its last item, a new folder.
std::optional<StemvaultFolder> selectedFolder(
    const std::vector<StemvaultFolder>& folders, int index)
{
    if (index < 0 || index >= static_cast<int>(folders.size()))
        return std::nullopt;
    return folders[static_cast<std::size_t>(index)];
}

} // namespace

BounceAlertController::BounceAlertController() : appIcon(loadAppIcon())
{
    setUpUserNotifications();
}

BounceAlertController::~BounceAlertController()
{
    Platform::current().userNotificationCenter.setDelegate(nullptr);
}

void BounceAlertController::showNextIfIdle()
{
    // Files that arrive while an alert or the folder panel is open are left to the loop that opened
    // it, which shows the next prompt once it has acted on the answer.
    if (isShowing)
        return;
    isShowing = true;
    while (!queue.empty()) {
        const Entry next = std::move(queue.front());
        queue.pop_front();
        show(next);
    }
    isShowing = false;
}

void BounceAlertController::show(const Entry& entry)
{
    // Copies, because other work may change the settings and the queue while the alert is open.
    const auto folders = SettingsStore::shared().stemvaultFolders();
    const std::size_t waiting = queue.size();
    Alert alert = bounceAlert(entry, waiting);
    if (folders.empty() && !SettingsStore::shared().projectsRootPath()) {
        showNoDestination(std::move(alert));
        return;
    }
    alert.accessoryView = destinationPopUp(folders);
    const auto buttons = promptButtons(waiting);
    for (const PromptButton& button : buttons)
        alert.buttons.push_back(button.title);
    const AlertAnswer answer = runInFront(alert);

    const Choice choice = choiceOf(buttons, answer.response);
    if (choice == Choice::Cancel)
        queue.clear();
    else if (choice != Choice::Skip)
        add(entry, choice == Choice::AddAll, selectedFolder(folders, answer.indexOfSelectedItem));
}

Alert BounceAlertController::bounceAlert(const Entry& entry, std::size_t waiting) const
{
    Alert alert;
    alert.messageText = "Bounce detected";
    alert.informativeText = informativeText(entry, waiting);
    alert.style = AlertStyle::Informational;
    alert.icon = appIcon;
    return alert;
}

void BounceAlertController::showNoDestination(Alert alert)
{
    alert.buttons = { "Open Preferences", "Skip" };
    const AlertAnswer answer = runInFront(alert);
    if (answer.response == ModalResponse::alertFirstButton)
        NotificationCenter::defaultCenter().post({ std::string(openPreferences), {} });
}

void BounceAlertController::add(
    const Entry& current, bool isWholeQueue, std::optional<StemvaultFolder> destination)
{
    if (!destination)
        destination = resolveNewFolder();
    if (!destination)
        return;
    if (!isWholeQueue) {
        copyFile(current, *destination);
        return;
    }
    // Includes the files that arrived while the alert was open.
    std::vector<Entry> files { current };
    std::ranges::move(std::exchange(queue, {}), std::back_inserter(files));
    copyBatch(files, *destination);
}

std::optional<StemvaultFolder> BounceAlertController::resolveNewFolder()
{
    SettingsStore& settings = SettingsStore::shared();
    const OpenPanelAnswer answer = runInFront(newFolderPanel(settings.projectsRootPath()));
    if (answer.response != ModalResponse::ok || !answer.url)
        return std::nullopt;

    StemvaultFolder chosen { UUID(), answer.url->lastPathComponent(),
        std::string(withoutTrailingSlash(answer.url->path())) };
    const auto hasChosenPath = [&chosen](const StemvaultFolder& folder) {
        return folder.path == chosen.path;
    };
    if (std::ranges::none_of(settings.stemvaultFolders(), hasChosenPath))
        settings.addFolder(chosen);
    return chosen;
}

} // namespace stemvault
