#pragma once

#include <QByteArrayList>
#include <QIcon>
#include <QString>

namespace stemvault {

/// The PNG images inside an icon container ("icns"), as they are, in the order of the file. Empty
/// when it is not one, is cut short, or holds only images in other forms.
[[nodiscard]] QByteArrayList pngsInIcns(const QByteArray& file);

/// The icon in an image file of any kind that can be read; a container gives all its sizes that a
/// screen can use. A null icon when there is none.
[[nodiscard]] QIcon iconFromFile(const QString& path);

/// Whether an image can be read from the file. Decodes the smallest one it holds.
[[nodiscard]] bool isReadableImage(const QString& path);

} // namespace stemvault
