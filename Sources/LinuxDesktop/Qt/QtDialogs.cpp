#include "LinuxDesktop/Qt/QtDialogs.h"

#include "LinuxDesktop/Qt/AlertWindow.h"
#include "LinuxDesktop/Qt/LinuxBundle.h"
#include "LinuxDesktop/Qt/OpenPanelWindow.h"

#include <QIcon>

namespace stemvault {

AlertAnswer QtDialogs::runModal(const Alert& alert)
{
    const QIcon usual = applicationIcon.icon();
    AlertWindow window(alert, alert.icon ? iconFromImage(*alert.icon) : usual);
    const int response = windows.run(window);
    return { response == 0 ? ModalResponse::stopped : response, window.indexOfSelectedItem(),
        window.text() };
}

OpenPanelAnswer QtDialogs::runModal(const OpenPanel& panel)
{
    (void)applicationIcon.icon(); // The panel's window bears it.
    OpenPanelWindow window(panel);
    if (windows.run(window) != QDialog::Accepted)
        return {};
    const std::vector<FileURL> urls = window.chosen();
    if (urls.empty())
        return {};
    return { ModalResponse::ok, urls.front(), urls };
}

} // namespace stemvault
