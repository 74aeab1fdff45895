#pragma once

#include "LinuxDesktop/Application/ApplicationIcon.h"
#include "LinuxDesktop/Application/ModalWindows.h"
#include "Platform/Dialogs.h"

#include <QIcon>

namespace stemvault::dialogs {

class QtDialogs final : public Dialogs {
public:
    QtDialogs(application::ModalWindows& modalWindows, application::ApplicationIcon& iconOfWindows)
        : windows(modalWindows), applicationIcon(iconOfWindows)
    {
    }

    [[nodiscard]] AlertAnswer runModal(const Alert& alert) override;
    [[nodiscard]] OpenPanelAnswer runModal(const OpenPanel& panel) override;

private:
    [[nodiscard]] QIcon iconOf(const Alert& alert);

    application::ModalWindows& windows;
    application::ApplicationIcon& applicationIcon;
    Image shownLast;
    QIcon iconShownLast; ///< Null until an alert that specifies an icon has been shown.
};

} // namespace stemvault::dialogs
