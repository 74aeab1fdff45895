#pragma once

#include <QString>
#include <QStringList>

#include <optional>

namespace stemvault {

/// What a tool of the desktop prints, without white space at its ends. Absent when it is not
/// installed, fails, or takes more than a few seconds. Runs the event loop meanwhile.
[[nodiscard]] std::optional<QString> outputOf(const QString& program, const QStringList& arguments);

} // namespace stemvault
