#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace stemvault {

/// The clipboard of a Wayland desktop. It is read with the tool wl-paste, because the way in which
/// a program without a window may read it differs between desktops.
class WaylandClipboard {
public:
    using Deadline = std::chrono::steady_clock::time_point;

    /// The formats of the content. Empty when nothing was copied, or when the tool does not answer
    /// in time. Absent when the tool is not installed.
    [[nodiscard]] static std::optional<std::vector<std::string>> formats(Deadline deadline);

    /// The content in this format; empty when it does not arrive in time.
    [[nodiscard]] static std::string read(std::string_view format, Deadline deadline);
};

} // namespace stemvault
