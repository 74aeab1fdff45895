#pragma once

#include "Platform/StatusBar.h"

#include <QColor>
#include <QImage>
#include <QKeySequence>
#include <QString>

namespace stemvault::status_bar {

/// A row as desktops can show it. Text colours cannot be sent to another process but pictures can,
/// so a coloured mark at the start of a text is drawn as the row's icon and left out of its text.
struct MenuRow {
    QString text; ///< Without the mark that the icon shows.
    QString spokenText; ///< The whole text.
    QImage icon; ///< Null if there is none.
};

/// The desktop's key sequence for a key equivalent.
[[nodiscard]] QKeySequence commandKey(const std::string& keyEquivalent);

[[nodiscard]] MenuRow menuRow(const MenuItem& item);

} // namespace stemvault::status_bar
