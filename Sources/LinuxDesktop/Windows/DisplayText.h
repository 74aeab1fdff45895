#pragma once

#include <QString>

#include <string_view>

namespace stemvault::windows {

// These functions prepare texts, including file names, for display as plain text. Bytes that are
// not UTF-8 become replacement characters. So do characters that would change the direction of the
// text around them. Control characters become visible symbols. A name can therefore neither break
// the layout nor imitate another name.

/// One line, in which line feeds become symbols too. Beyond 280 characters, its middle is cut.
[[nodiscard]] QString displayLine(std::string_view text);

/// The same line uncut, for places that have room for a long text.
[[nodiscard]] QString displayWholeLine(std::string_view text);

/// Several lines, separated by line feeds. Tabs become blanks. Beyond 20,000 characters, which only
/// a hostile text has, the middle is cut.
[[nodiscard]] QString displayLines(std::string_view text);

/// One line for a control in which an ampersand marks a shortcut.
[[nodiscard]] QString displayTitle(std::string_view text);

/// The tool tip for a line from the functions above: plain text, even if it looks like markup,
/// broken into lines that fit the screen. Empty for an empty line.
[[nodiscard]] QString toolTipText(const QString& text);

} // namespace stemvault::windows
