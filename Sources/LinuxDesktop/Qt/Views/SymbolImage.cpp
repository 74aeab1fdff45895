#include "LinuxDesktop/Qt/Views/SymbolImage.h"

#include <QGuiApplication>
#include <QImageReader>
#include <QPainter>
#include <QPalette>
#include <QPixmapCache>

namespace stemvault {

namespace {

QString& folderOfSymbols()
{
    static QString folder;
    return folder;
}

QPixmap drawn(const QString& path, int pixels, const QColor& color)
{
    QImageReader reader(path);
    reader.setScaledSize({ pixels, pixels });
    QImage image = reader.read().convertToFormat(QImage::Format_ARGB32_Premultiplied);
    if (image.isNull())
        return {};
    QPainter painter(&image);
    painter.setCompositionMode(QPainter::CompositionMode_SourceIn);
    painter.fillRect(image.rect(), color);
    painter.end();
    return QPixmap::fromImage(image);
}

} // namespace

void setSymbolFolder(const std::string& folder)
{
    folderOfSymbols() = QString::fromStdString(folder);
}

QPixmap symbolPixmap(
    const std::string& systemName, int size, qreal devicePixelRatio, const QColor& color)
{
    const int pixels = qRound(size * devicePixelRatio);
    const QString name = QString::fromStdString(systemName);
    const QString key =
        QStringLiteral("%1 %2 %3").arg(name).arg(pixels).arg(color.name(QColor::HexArgb));
    QPixmap pixmap;
    if (!QPixmapCache::find(key, &pixmap)) {
        pixmap = drawn(folderOfSymbols() + u'/' + name + QStringLiteral(".svg"), pixels, color);
        QPixmapCache::insert(key, pixmap);
    }
    pixmap.setDevicePixelRatio(devicePixelRatio);
    return pixmap;
}

QIcon symbolIcon(const std::string& path)
{
    QIcon icon;
    const QColor color = QGuiApplication::palette().color(QPalette::WindowText);
    for (const int pixels : { 16, 22, 24, 32, 44, 48, 64 })
        icon.addPixmap(drawn(QString::fromStdString(path), pixels, color));
    return icon;
}

} // namespace stemvault
