#include "LinuxDesktop/Hotkey/HotkeySetup.h"

#include "LinuxDesktop/Hotkey/KeyboardSettings.h"

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>

#include <utility>

namespace stemvault::hotkey {

HotkeySetup::HotkeySetup(
    Dialogs& itsDialogs, const std::string& courier, QDBusConnection sessionBus)
    : dialogs(itsDialogs), shortcut({ "Add to Stemvault", courier, "add-selection" }),
      bus(std::move(sessionBus))
{
}

// The folder of an installed executable also holds other programs, so a courier there comes last.
std::string HotkeySetup::standardCourier()
{
    const QString folder = QCoreApplication::applicationDirPath();
    const QString installed = folder + QStringLiteral("/../libexec/stemvault-connect/courier");
    if (QFile::exists(installed))
        return QFile::encodeName(QFileInfo(installed).canonicalFilePath()).toStdString();
    return QFile::encodeName(folder + QStringLiteral("/courier")).toStdString();
}

bool HotkeySetup::show()
{
    const std::string desktop = qgetenv("XDG_CURRENT_DESKTOP").toStdString();
    if (!addToShortcutList(desktop, shortcut, bus)) {
        Alert alert;
        alert.messageText = "Bind a key to this command";
        alert.informativeText =
            "This desktop keeps its shortcuts in a place that is not known here. "
            "In its settings, bind a key of your choice to:\n\n"
            + shortcut.command();
        alert.style = AlertStyle::Informational;
        static_cast<void>(dialogs.runModal(alert));
    }
    return openKeyboardSettings(desktop);
}

} // namespace stemvault::hotkey
