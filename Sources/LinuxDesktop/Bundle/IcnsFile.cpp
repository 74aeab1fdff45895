#include "LinuxDesktop/Bundle/IcnsFile.h"

#include <QFile>
#include <QImageReader>
#include <QPixmap>
#include <QtEndian>

#include <algorithm>

namespace stemvault::bundle {

namespace {

constexpr qsizetype headerSize = 8; ///< Four letters and the big-endian size, header included.
constexpr int largestUseful = 256; ///< In pixels: the largest icon drawn, on a screen at 400 %.
const QByteArray pngMark("\x89PNG\r\n\x1A\n", 8);

quint32 sizeAt(const QByteArray& file, qsizetype offset)
{
    return qFromBigEndian<quint32>(file.constData() + offset + 4);
}

bool isIcns(const QString& path)
{
    return path.endsWith(QLatin1String(".icns"), Qt::CaseInsensitive);
}

QByteArrayList pngsInFile(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? pngsInIcns(file.readAll()) : QByteArrayList();
}

int widthOfPng(const QByteArray& png)
{
    constexpr qsizetype widthOffset = 16;
    return png.size() < widthOffset + 4
        ? 0
        : static_cast<int>(qFromBigEndian<quint32>(png.constData() + widthOffset));
}

} // namespace

QByteArrayList pngsInIcns(const QByteArray& file)
{
    QByteArrayList pngs;
    if (file.size() < headerSize || !file.startsWith("icns")
        || qsizetype(sizeAt(file, 0)) > file.size())
        return pngs;
    const qsizetype end = sizeAt(file, 0);
    for (qsizetype at = headerSize; at + headerSize <= end;) {
        const qsizetype size = sizeAt(file, at);
        if (size < headerSize || size > end - at)
            return {};
        const QByteArray content = file.mid(at + headerSize, size - headerSize);
        if (content.startsWith(pngMark))
            pngs << content;
        at += size;
    }
    return pngs;
}

QIcon iconFromFile(const QString& path)
{
    if (!isIcns(path))
        return isReadableImage(path) ? QIcon(path) : QIcon();
    QIcon icon;
    for (const QByteArray& png : pngsInFile(path))
        if (QPixmap pixmap; widthOfPng(png) <= largestUseful && pixmap.loadFromData(png, "PNG"))
            icon.addPixmap(pixmap);
    return icon;
}

bool isReadableImage(const QString& path)
{
    if (!isIcns(path))
        return !QImageReader(path).read().isNull();
    const QByteArrayList pngs = pngsInFile(path);
    const auto smallest = std::ranges::min_element(pngs, {}, widthOfPng);
    return smallest != pngs.end() && !QImage::fromData(*smallest, "PNG").isNull();
}

} // namespace stemvault::bundle
