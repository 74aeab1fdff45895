#pragma once

#include "Platform/View.h"

#include <QColor>
#include <QFont>
#include <QPalette>

namespace stemvault {

// How roles of fonts and colours look on this desktop. Sizes in points of the window.

namespace ViewMetrics {
inline constexpr int groupMargin = 16; ///< Around a group of controls.
/// How far a control reaches beyond what is drawn of it at rest, at its right: room for the marks
/// of the pointer and the keyboard. Groups give it back, so that all of them end at one edge.
inline constexpr int overhang = 4;
inline constexpr int spacing = 6; ///< Between views beside each other that name none.
inline constexpr int lineSpacing = 2; ///< Between texts above each other that name none.
inline constexpr int cornerRadius = 6;
} // namespace ViewMetrics

[[nodiscard]] bool isDark(const QPalette& palette);
[[nodiscard]] QColor color(Color role, const QPalette& palette);
[[nodiscard]] QFont font(const Font& role);

/// The font of a control's title.
[[nodiscard]] QFont controlFont(ControlSize size);

/// The side of a symbol that stands beside text of this font.
[[nodiscard]] int symbolSize(const QFont& font);

/// The side of a symbol that stands alone, a little larger than text of this font.
[[nodiscard]] int standingSymbolSize(const QFont& font);

/// A faint line, such as a border or a divider.
[[nodiscard]] QColor lineColor(const QPalette& palette);

} // namespace stemvault
