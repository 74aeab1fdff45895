#pragma once

#include "LinuxDesktop/Qt/ApplicationIcon.h"
#include "LinuxDesktop/Qt/ModalWindows.h"
#include "Platform/Dialogs.h"

namespace stemvault {

class QtDialogs final : public Dialogs {
public:
    QtDialogs(ModalWindows& modalWindows, ApplicationIcon& iconOfWindows)
        : windows(modalWindows), applicationIcon(iconOfWindows)
    {
    }

    [[nodiscard]] AlertAnswer runModal(const Alert& alert) override;
    [[nodiscard]] OpenPanelAnswer runModal(const OpenPanel& panel) override;

private:
    ModalWindows& windows;
    ApplicationIcon& applicationIcon;
};

} // namespace stemvault
