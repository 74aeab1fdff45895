#pragma once

#include <QString>

/// The names by which the desktop knows the program.
namespace stemvault::identity {

/// The name of the desktop entry and of the icon, and the program's name on the bus.
inline const QString applicationId = QStringLiteral("net.stemvault.Connect");
inline const QString objectPath = QStringLiteral("/net/stemvault/Connect");
inline const QString servicesPath = QStringLiteral("/net/stemvault/Connect/Services1");
inline const QString displayName = QStringLiteral("Stemvault Connect");

} // namespace stemvault::identity
