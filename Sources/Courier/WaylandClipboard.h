#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace stemvault {

/// The clipboard of a Wayland desktop, read by the tool wl-paste: how a program without a window of
/// its own may read it differs from desktop to desktop.
class WaylandClipboard {
public:
    using Deadline = std::chrono::steady_clock::time_point;

    /// Empty when nothing was copied, or when the tool has not said so in time. Absent when the
    /// tool is not installed.
    [[nodiscard]] static std::optional<std::vector<std::string>> formats(Deadline deadline);

    /// Empty when it did not come in time.
    [[nodiscard]] static std::string read(std::string_view format, Deadline deadline);
};

} // namespace stemvault
