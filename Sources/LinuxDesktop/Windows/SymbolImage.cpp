#include "LinuxDesktop/Windows/SymbolImage.h"

#include <QGuiApplication>
#include <QIconEngine>
#include <QPainter>
#include <QPalette>
#include <QPixmapCache>
#include <QSvgRenderer>

#include <utility>

namespace stemvault::windows {

namespace {

QString& folderOfSymbols()
{
    static QString folder;
    return folder;
}

QPixmap drawn(const QString& path, int pixels, const QColor& color)
{
    QSvgRenderer symbol(path);
    if (!symbol.isValid())
        return {};
    QImage image(pixels, pixels, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    symbol.render(&painter);
    painter.setCompositionMode(QPainter::CompositionMode_SourceIn);
    painter.fillRect(image.rect(), color);
    painter.end();
    return QPixmap::fromImage(image);
}

/// The older trays do not report their colour, which may differ from that of the windows. A thin
/// outline keeps the symbol visible on any colour; where it is not needed, it is hardly noticeable.
QPixmap withOutline(const QString& path, int pixels, const QColor& color)
{
    const QPixmap symbol = drawn(path, pixels, color);
    const QPixmap seam = drawn(path, pixels, color.lightness() > 127 ? Qt::black : Qt::white);
    QPixmap whole(symbol.size());
    whole.fill(Qt::transparent);
    QPainter painter(&whole);
    painter.setOpacity(0.4);
    const qreal width = qMax(1.0, pixels / 22.0);
    for (const QPointF& step : { QPointF(-1, 0), QPointF(1, 0), QPointF(0, -1), QPointF(0, 1) })
        painter.drawPixmap(step * width, seam);
    painter.setOpacity(1);
    painter.drawPixmap(0, 0, symbol);
    return whole;
}

/// Draws the symbol at the requested size, in the colour that texts have at that time.
class SymbolEngine final : public QIconEngine {
public:
    explicit SymbolEngine(QString file) : path(std::move(file)) { }

    void paint(QPainter* painter, const QRect& rect, QIcon::Mode mode, QIcon::State state) override
    {
        const qreal ratio = painter->device()->devicePixelRatio();
        painter->drawPixmap(rect, pixmap(rect.size() * ratio, mode, state));
    }
    QPixmap pixmap(const QSize& size, QIcon::Mode /*mode*/, QIcon::State /*state*/) override
    {
        return withOutline(path, qMin(size.width(), size.height()),
            QGuiApplication::palette().color(QPalette::WindowText));
    }
    [[nodiscard]] QIconEngine* clone() const override { return new SymbolEngine(path); }

private:
    QString path;
};

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
    return QIcon(new SymbolEngine(QString::fromStdString(path)));
}

} // namespace stemvault::windows
