#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace stemvault {

// Pure functions over the text of desktop entries and of a sandbox's description, which has the
// same form.

/// An application as the desktop's menu describes it.
struct DesktopEntry {
    std::string name; ///< In the user's language.
    std::string windowClass; ///< Empty when the entry names none.
    std::string
        program; ///< The last path component of what it runs; empty when that tells nothing.
    std::string requiredProgram; ///< The entry counts only if this exists; empty when always.
    bool isHidden = false; ///< Deleted by the user: as if there were none of its identifier at all.
    bool isInMenu = true;
    bool runsInTerminal = false;

    [[nodiscard]] bool operator==(const DesktopEntry&) const = default;
};

/// Absent when the text describes no application. `languages` are the name's suffixes wanted, as
/// preferredLanguages gives them.
[[nodiscard]] std::optional<DesktopEntry> parseDesktopEntry(
    std::string_view text, const std::vector<std::string>& languages);

/// "de_AT", "de" for "de_AT.UTF-8", the best first; none for the locale C.
[[nodiscard]] std::vector<std::string> preferredLanguages(std::string_view locale);

/// The last component of the program that an Exec line runs. Empty for a program that runs others
/// under their names, such as a shell, which would stand for any of them.
[[nodiscard]] std::string programOfExecLine(std::string_view line);

/// From the text of a sandbox's `.flatpak-info`.
[[nodiscard]] std::optional<std::string> parseFlatpakIdentifier(std::string_view text);

} // namespace stemvault
