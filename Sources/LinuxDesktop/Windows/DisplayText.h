#pragma once

#include <QString>

#include <string_view>

namespace stemvault {

// Texts of the program, file names among them, made fit to be shown as plain text. What is not
// UTF-8 becomes replacement characters. Control characters become visible pictures, and those that
// would turn the direction of the text around them, replacement characters, so that a name can
// neither break the layout nor pose as another.

/// One line: line feeds become pictures too. The middle of one of more than 280 characters is cut.
[[nodiscard]] QString displayLine(std::string_view text);

/// The same line uncut, for a place where everything can be read.
[[nodiscard]] QString displayWholeLine(std::string_view text);

/// Several lines: a line feed ends one, and a tab is a few blanks. Only a hostile text is so long
/// that its middle is cut.
[[nodiscard]] QString displayLines(std::string_view text);

/// One line for a control that takes an ampersand for the mark of a shortcut.
[[nodiscard]] QString displayTitle(std::string_view text);

/// A line made fit before, as a tool tip shows it: plain text, whatever markup it looks like, in
/// lines that a screen has room for. Empty for none.
[[nodiscard]] QString toolTipText(const QString& text);

} // namespace stemvault
