#pragma once

#include <QColor>
#include <QIcon>
#include <QPixmap>

#include <string>

namespace stemvault::windows {

// The program's own symbols: SVG shapes without a colour. The SVG library draws them instead of an
// image plugin, because without an installed plugin the windows would have no symbols.

/// Sets the folder of the symbols. Call it before the first symbol is drawn.
void setSymbolFolder(const std::string& folder);

/// The symbol in one colour, `size` points high and wide, at the given ratio of pixels to points.
[[nodiscard]] QPixmap symbolPixmap(
    const std::string& systemName, int size, qreal devicePixelRatio, const QColor& color);

/// The symbol in a file as an icon, drawn in the current colour of texts, with an outline that
/// keeps it visible on any background.
[[nodiscard]] QIcon symbolIcon(const std::string& path);

} // namespace stemvault::windows
