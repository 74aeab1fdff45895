#pragma once

#include <chrono>
#include <string>

namespace stemvault::workspace {

/// Opens a URL in the user's application for it, with the desktop's own tool, xdg-open. Returns
/// whether that succeeded. Runs the event loop until the tool has ended. A tool that takes longer
/// than `timeout` counts as a success: on plain window managers it becomes the application itself.
[[nodiscard]] bool openURL(
    const std::string& url, std::chrono::milliseconds timeout = std::chrono::seconds(10));

} // namespace stemvault::workspace
