#include "LinuxDesktop/Dialogs/PanelPlaces.h"

#include "LinuxDesktop/FileEvents/MountTable.h"

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>
#include <QPointer>
#include <QStandardPaths>
#include <QUrl>
#include <QXmlStreamReader>

#include <algorithm>
#include <memory>
#include <thread>
#include <utility>

namespace stemvault::dialogs {

namespace {

constexpr qsizetype maxPlaces = 40;

void addFolder(QStringList& folders, const QUrl& url)
{
    const QString folder = url.toLocalFile();
    if (url.isLocalFile() && url.host().isEmpty() && !folders.contains(folder))
        folders.append(folder);
}

QByteArray content(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

QStringList allPlaces()
{
    const QString config =
        QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) + u'/';
    const QString data =
        QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation) + u'/';
    QStringList mounted;
    for (const std::string& point : file_events::MountTable().mountPoints())
        mounted.append(QFile::decodeName(point.c_str()));
    QStringList places =
        foldersInGtkBookmarks(content(config + QStringLiteral("gtk-3.0/bookmarks")))
        + foldersInKdePlaces(content(data + QStringLiteral("user-places.xbel")))
        + drivesAmong(mounted);
    places.removeDuplicates();
    return places.first(std::min(places.size(), maxPlaces));
}

/// Uses one thread for each place, because `isDir` blocks while a drive does not respond.
void lookFor(const QString& place, const QPointer<QObject>& context,
    const std::shared_ptr<std::function<void(const QString&)>>& work)
{
    std::thread([place, context, work] {
        if (!QFileInfo(place).isDir())
            return;
        QCoreApplication* program = QCoreApplication::instance();
        if (!program)
            return;
        QMetaObject::invokeMethod(
            program,
            [place, context, work] {
                if (context)
                    (*work)(place);
            },
            Qt::QueuedConnection);
    }).detach();
}

} // namespace

QStringList foldersInGtkBookmarks(const QByteArray& text)
{
    QStringList folders;
    for (const QByteArray& line : text.split('\n'))
        addFolder(folders, QUrl::fromEncoded(line.split(' ').first()));
    return folders;
}

QStringList foldersInKdePlaces(const QByteArray& xbel)
{
    QStringList folders;
    QUrl url;
    bool isHidden = false;
    QXmlStreamReader reader(xbel);
    while (!reader.atEnd()) {
        reader.readNext();
        if (reader.isStartElement() && reader.name() == u"bookmark") {
            url = QUrl::fromEncoded(reader.attributes().value(QLatin1String("href")).toUtf8());
            isHidden = false;
        } else if (reader.isStartElement() && reader.name() == u"IsHidden") {
            isHidden = reader.readElementText() == u"true";
        } else if (reader.isEndElement() && reader.name() == u"bookmark" && !isHidden) {
            addFolder(folders, url);
        }
    }
    return folders;
}

QStringList drivesAmong(const QStringList& mountPoints)
{
    QStringList drives;
    for (const QString& point : mountPoints)
        for (const char* parent : { "/media/", "/run/media/", "/mnt/" })
            if (point.startsWith(QLatin1String(parent)) && !drives.contains(point))
                drives.append(point);
    return drives;
}

void findPanelPlaces(QObject* context, std::function<void(const QString& folder)> work)
{
    const auto shared = std::make_shared<std::function<void(const QString&)>>(std::move(work));
    std::thread([watched = QPointer<QObject>(context), shared] {
        for (const QString& place : allPlaces())
            lookFor(place, watched, shared);
    }).detach();
}

} // namespace stemvault::dialogs
