#pragma once

#include <array>
#include <string>
#include <string_view>
#include <vector>

namespace stemvault {

/// The formats in which the file managers put copied files on a clipboard, the most telling first:
/// Nautilus, Nemo, Thunar and PCManFM; Caja; Dolphin and all others; older releases of Nautilus,
/// which have a text of their own.
constexpr std::array<std::string_view, 6> copiedFilesFormats { "x-special/gnome-copied-files",
    "x-special/mate-copied-files", "text/uri-list", "application/x-kde4-urilist",
    "x-special/nautilus-clipboard", "UTF8_STRING" };

/// The URIs of this machine's files that such a content names, in its order. Whether they were
/// copied or cut makes no difference: what is cut is moved only where it is pasted.
[[nodiscard]] std::vector<std::string> copiedFiles(
    std::string_view format, std::string_view content);

} // namespace stemvault
