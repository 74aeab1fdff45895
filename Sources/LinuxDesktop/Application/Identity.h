#pragma once

#include <QString>

/// How the desktop knows the program.
namespace stemvault::identity {

/// Names the desktop entry, the icon and the program on the bus.
inline const QString applicationId = QStringLiteral("net.stemvault.Connect");
inline const QString objectPath = QStringLiteral("/net/stemvault/Connect");
inline const QString servicesPath = QStringLiteral("/net/stemvault/Connect/Services1");
inline const QString displayName = QStringLiteral("Stemvault Connect");

} // namespace stemvault::identity
