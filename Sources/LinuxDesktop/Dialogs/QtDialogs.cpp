#include "LinuxDesktop/Dialogs/QtDialogs.h"

#include "LinuxDesktop/Bundle/LinuxBundle.h"
#include "LinuxDesktop/Dialogs/AlertWindow.h"
#include "LinuxDesktop/Dialogs/OpenPanelWindow.h"

#include <memory>
#include <utility>

namespace stemvault::dialogs {

AlertAnswer QtDialogs::runModal(const Alert& alert)
{
    AlertWindow window(alert, iconOf(alert));
    const int response = windows.run(window);
    return { response == 0 ? ModalResponse::stopped : response, window.indexOfSelectedItem(),
        window.text() };
}

OpenPanelAnswer QtDialogs::runModal(const OpenPanel& panel)
{
    static_cast<void>(applicationIcon.icon()); // Loads the icon of the panel's window.
    auto window = std::make_unique<OpenPanelWindow>(panel);
    const bool isAccepted = windows.run(*window) == QDialog::Accepted;
    const std::vector<FileURL> urls = isAccepted ? window->chosen() : std::vector<FileURL>();
    OpenPanelWindow::endWhenRead(std::move(window));
    if (urls.empty())
        return {};
    return { ModalResponse::ok, urls.front(), urls };
}

// Keeps the icon that was shown last, because nearly every alert has the same one. Reading it anew
// each time would add new pixmaps to the toolkit's cache each time.
QIcon QtDialogs::iconOf(const Alert& alert)
{
    QIcon usual = applicationIcon.icon();
    if (!alert.icon)
        return usual;
    if (iconShownLast.isNull() || shownLast != *alert.icon) {
        shownLast = *alert.icon;
        iconShownLast = bundle::iconFromImage(shownLast);
    }
    return iconShownLast;
}

} // namespace stemvault::dialogs
