#pragma once

#include <QByteArrayList>
#include <QIcon>
#include <QString>

namespace stemvault::bundle {

/// The undecoded PNG images in an icon container ("icns"), in the order of the file. Empty if it is
/// not such a container, is truncated, or holds only images in other formats.
[[nodiscard]] QByteArrayList pngsInIcns(const QByteArray& file);

/// The icon in an image file of any readable format. From a container, it has all sizes that a
/// screen can use. A null icon if there is none.
[[nodiscard]] QIcon iconFromFile(const QString& path);

/// Whether an image can be read from the file. Of a container, only the smallest image is decoded.
[[nodiscard]] bool isReadableImage(const QString& path);

} // namespace stemvault::bundle
