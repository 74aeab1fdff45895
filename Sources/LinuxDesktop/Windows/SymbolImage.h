#pragma once

#include <QColor>
#include <QIcon>
#include <QPixmap>

#include <string>

namespace stemvault {

// The program's own symbols: SVG shapes without a colour of their own. The SVG library draws them,
// not an image plugin: a plugin that is not installed would leave the windows without symbols.

/// Names the folder of the symbols, once, before the first is drawn.
void setSymbolFolder(const std::string& folder);

/// The symbol in one colour, `size` points high and wide, sharp at the ratio of pixels to points.
[[nodiscard]] QPixmap symbolPixmap(
    const std::string& systemName, int size, qreal devicePixelRatio, const QColor& color);

/// The symbol in a file as an icon in the colour that texts have when it is drawn, to be seen on
/// any background.
[[nodiscard]] QIcon symbolIcon(const std::string& path);

} // namespace stemvault
