#pragma once

#include "Foundation/UUID.h"
#include "Platform/Platform.h"

#include <string>

namespace stemvault {

/// Brings the program to the front, shows an alert or a panel and returns the user's answer.
auto runInFront(const auto& question)
{
    const Platform& platform = Platform::current();
    platform.application.activateIgnoringOtherApps();
    return platform.dialogs.runModal(question);
}

/// A panel to choose an existing folder.
[[nodiscard]] inline OpenPanel folderPanel(const std::string& prompt)
{
    OpenPanel panel;
    panel.canChooseFiles = false;
    panel.canChooseDirectories = true;
    panel.prompt = prompt;
    return panel;
}

/// Shows a notification with the default sound.
inline void notifyUser(const std::string& title, const std::string& body)
{
    Platform::current().userNotificationCenter.add(
        { UUID().uuidString(), title, body, UserNotificationSound::Default });
}

} // namespace stemvault
