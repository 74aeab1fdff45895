#pragma once

#include "Foundation/UUID.h"
#include "Platform/Platform.h"

#include <string>

namespace stemvault {

/// Puts the program in front of all others and asks the user; the answer of an alert or of a panel.
auto runInFront(const auto& question)
{
    const Platform& platform = Platform::current();
    platform.application.activateIgnoringOtherApps();
    return platform.dialogs.runModal(question);
}

/// A panel to choose a folder that is there.
[[nodiscard]] inline OpenPanel folderPanel(const std::string& prompt)
{
    OpenPanel panel;
    panel.canChooseFiles = false;
    panel.canChooseDirectories = true;
    panel.prompt = prompt;
    return panel;
}

/// Tells the user without asking anything, with the default sound.
inline void notifyUser(const std::string& title, const std::string& body)
{
    Platform::current().userNotificationCenter.add(
        { UUID().uuidString(), title, body, UserNotificationSound::Default });
}

} // namespace stemvault
