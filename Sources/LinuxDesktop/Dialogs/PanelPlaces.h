#pragma once

#include <QByteArray>
#include <QObject>
#include <QString>
#include <QStringList>

#include <functional>

namespace stemvault {

// What file managers list at the side: the folders the user has bookmarked, and drives.

/// The folders in a list of bookmarks as GTK's file managers keep it: a URL and perhaps a name on
/// each line. Those of other machines are left out. Pure.
[[nodiscard]] QStringList foldersInGtkBookmarks(const QByteArray& text);

/// The folders in KDE's list of places, an XBEL document; those that are hidden are left out. Pure.
[[nodiscard]] QStringList foldersInKdePlaces(const QByteArray& xbel);

/// The drives among these mount points: what lies where drives of the user are mounted. Pure.
[[nodiscard]] QStringList drivesAmong(const QStringList& mountPoints);

/// Reads the places of this user in the background and calls `work` on the main thread once for
/// each that is there; for none once `context` is gone. A place on a drive that does not answer
/// holds up itself alone.
void findPanelPlaces(QObject* context, std::function<void(const QString& folder)> work);

} // namespace stemvault
