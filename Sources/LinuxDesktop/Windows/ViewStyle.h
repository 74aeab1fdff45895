#pragma once

#include "Platform/View.h"

#include <QColor>
#include <QFont>
#include <QPalette>

namespace stemvault::windows {

// How font and colour roles look on this desktop. Sizes are in points of the window.

namespace ViewMetrics {
inline constexpr int groupMargin = 16; ///< Around a group of controls.
/// How far a control extends at its right beyond what is drawn at rest, to leave room for the marks
/// of hovering and focus. Groups subtract it from their margin, so that all end at one edge.
inline constexpr int overhang = 4;
inline constexpr int spacing = 6; ///< The default in horizontal stacks.
inline constexpr int lineSpacing = 2; ///< The default in vertical stacks.
inline constexpr int cornerRadius = 6;
} // namespace ViewMetrics

[[nodiscard]] bool isDark(const QPalette& palette);
[[nodiscard]] QColor color(Color role, const QPalette& palette);
[[nodiscard]] QFont font(const Font& role);

/// The font of a control's title.
[[nodiscard]] QFont controlFont(ControlSize size);

/// The side length of a symbol next to text of this font.
[[nodiscard]] int symbolSize(const QFont& font);

/// The side length of a symbol that stands alone, a little larger than text of this font.
[[nodiscard]] int standingSymbolSize(const QFont& font);

/// A faint line, such as a border or a divider.
[[nodiscard]] QColor lineColor(const QPalette& palette);

} // namespace stemvault::windows
