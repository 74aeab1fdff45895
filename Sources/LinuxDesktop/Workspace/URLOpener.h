#pragma once

#include <chrono>
#include <string>

namespace stemvault {

/// Has the desktop's own tool, xdg-open, hand a URL to the user's application for it; whether it
/// could. Runs the event loop until the tool has ended. One that takes longer than `patience` is
/// taken for the application itself, which it runs in its place on plain window managers.
[[nodiscard]] bool openURL(
    const std::string& url, std::chrono::milliseconds patience = std::chrono::seconds(3));

} // namespace stemvault
