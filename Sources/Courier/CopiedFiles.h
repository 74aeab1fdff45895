#pragma once

#include <array>
#include <string>
#include <string_view>
#include <vector>

namespace stemvault {

/// The formats in which file managers put copied files on a clipboard, the most specific first:
/// Nautilus, Nemo, Thunar and PCManFM; Caja; Dolphin and all others; older releases of Nautilus,
/// which use their own kind of text.
constexpr std::array<std::string_view, 6> copiedFilesFormats { "x-special/gnome-copied-files",
    "x-special/mate-copied-files", "text/uri-list", "application/x-kde4-urilist",
    "x-special/nautilus-clipboard", "UTF8_STRING" };

/// The URIs of this machine's files in a clipboard's content, in the same order. Cut files count
/// like copied ones, because they are not moved until they are pasted.
[[nodiscard]] std::vector<std::string> copiedFiles(
    std::string_view format, std::string_view content);

} // namespace stemvault
