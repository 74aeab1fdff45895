#pragma once

#include <QByteArray>
#include <QObject>
#include <QString>
#include <QStringList>

#include <functional>

namespace stemvault::dialogs {

// The places that file managers list in their side bars: the user's bookmarked folders, and drives.

/// The folders in the bookmarks file of GTK's file managers: each line has a URL and optionally a
/// name. Folders of other machines are left out. Pure.
[[nodiscard]] QStringList foldersInGtkBookmarks(const QByteArray& text);

/// The folders in KDE's list of places, an XBEL document; hidden ones are left out. Pure.
[[nodiscard]] QStringList foldersInKdePlaces(const QByteArray& xbel);

/// The drives among these mount points: those below the folders where desktops mount drives. Pure.
[[nodiscard]] QStringList drivesAmong(const QStringList& mountPoints);

/// Reads the places of this user in the background and calls `work` on the main thread once for
/// each place that exists, as long as `context` does. An unresponsive drive delays only the places
/// on it.
void findPanelPlaces(QObject* context, std::function<void(const QString& folder)> work);

} // namespace stemvault::dialogs
