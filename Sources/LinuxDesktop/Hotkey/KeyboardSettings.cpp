#include "LinuxDesktop/Hotkey/KeyboardSettings.h"

#include <QProcess>
#include <QStandardPaths>

#include <algorithm>
#include <sstream>
#include <utility>

namespace stemvault::hotkey {

namespace {

struct Panel {
    std::string desktop;
    std::vector<std::string> command;
};

const std::vector<Panel>& panels()
{
    static const std::vector<Panel> known = {
        { "GNOME", { "gnome-control-center", "keyboard" } },
        { "Unity", { "gnome-control-center", "keyboard" } },
        { "ubuntu", { "gnome-control-center", "keyboard" } },
        { "KDE", { "systemsettings", "kcm_keys" } },
        { "KDE", { "kcmshell6", "kcm_keys" } },
        { "KDE", { "kcmshell5", "kcm_keys" } },
        { "XFCE", { "xfce4-keyboard-settings" } },
        { "X-Cinnamon", { "cinnamon-settings", "keyboard", "-t", "shortcuts" } },
        { "MATE", { "mate-keybinding-properties" } },
        { "LXQt", { "lxqt-config-globalkeyshortcuts" } },
    };
    return known;
}

} // namespace

std::vector<std::vector<std::string>> keyboardSettingsCommands(const std::string& currentDesktop)
{
    std::vector<std::vector<std::string>> commands;
    const auto add = [&commands](const Panel& panel) {
        if (std::ranges::find(commands, panel.command) == commands.end())
            commands.push_back(panel.command);
    };
    std::istringstream list(currentDesktop);
    for (std::string name; std::getline(list, name, ':');)
        for (const Panel& panel : panels())
            if (panel.desktop == name)
                add(panel);
    std::ranges::for_each(panels(), add);
    return commands;
}

bool openKeyboardSettings(const std::string& currentDesktop)
{
    for (const auto& command : keyboardSettingsCommands(currentDesktop)) {
        const QString program =
            QStandardPaths::findExecutable(QString::fromStdString(command.front()));
        if (program.isEmpty())
            continue;
        QStringList arguments;
        for (std::size_t i = 1; i < command.size(); ++i)
            arguments << QString::fromStdString(command[i]);
        if (QProcess::startDetached(program, arguments))
            return true;
    }
    return false;
}

} // namespace stemvault::hotkey
