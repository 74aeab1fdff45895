#pragma once

#include "Platform/StatusBar.h"

#include <QColor>
#include <QImage>
#include <QKeySequence>
#include <QString>

namespace stemvault {

/// A row as desktops can show it. Colours do not cross to another process, pictures do: a coloured
/// mark at the start of a text is drawn as the row's icon and left out of its text.
struct MenuRow {
    QString text; ///< Without what the icon stands for.
    QString spokenText; ///< The whole.
    QImage icon; ///< Null when there is none.
};

/// The desktop's key sequence for a key equivalent.
[[nodiscard]] QKeySequence commandKey(const std::string& keyEquivalent);

[[nodiscard]] MenuRow menuRow(const MenuItem& item);

} // namespace stemvault
