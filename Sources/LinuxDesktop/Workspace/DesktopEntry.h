#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace stemvault::workspace {

// Pure functions for the text of desktop entries and of a sandbox's description, which has the same
// format.

/// An application as the desktop's menu describes it.
struct DesktopEntry {
    std::string name; ///< In the user's language.
    std::string windowClass; ///< Empty if the entry names none.
    std::string program; ///< The program that it runs, as programOfExecLine returns it.
    std::string requiredProgram; ///< The entry counts only if this exists; empty for none.
    bool isHidden = false; ///< Deleted by the user: as if no entry had this identifier.
    bool isInMenu = true;
    bool runsInTerminal = false;

    [[nodiscard]] bool operator==(const DesktopEntry&) const = default;
};

/// Absent if the text describes no application. `languages` are the preferred suffixes of the key
/// Name, as returned by preferredLanguages.
[[nodiscard]] std::optional<DesktopEntry> parseDesktopEntry(
    std::string_view text, const std::vector<std::string>& languages);

/// The languages of a locale, the best first: "de_AT", "de" for "de_AT.UTF-8". None for locale C.
[[nodiscard]] std::vector<std::string> preferredLanguages(std::string_view locale);

/// The last path component of the program that an Exec line runs. Empty for a program that runs
/// other programs, such as a shell, because it does not identify the application.
[[nodiscard]] std::string programOfExecLine(std::string_view line);

/// The identifier of the application, from the text of a sandbox's `.flatpak-info`.
[[nodiscard]] std::optional<std::string> parseFlatpakIdentifier(std::string_view text);

} // namespace stemvault::workspace
