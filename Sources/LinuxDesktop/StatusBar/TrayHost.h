#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusServiceWatcher>
#include <QObject>
#include <QString>

namespace stemvault::status_bar {

/// Registers the status item with the desktop's watcher of such items whenever one appears: at the
/// start, later, or again after a restart. Never blocks on it. Also reports whether any panel shows
/// the registered items.
class TrayHost final : public QObject {
    Q_OBJECT
public:
    /// `itemPath` is the item's object on this connection.
    TrayHost(QDBusConnection connection, QString itemPath);

Q_SIGNALS:
    /// Emitted once after the start, and at each change.
    void isThere(bool there);

private Q_SLOTS:
    void ask();

private:
    /// How to treat a "no": after a tentative one, the watcher is asked once more.
    enum class Answer { Tentative, Final };

    void registerItem();
    void ask(Answer whenAbsent);
    void set(bool there);
    [[nodiscard]] static QDBusMessage call(const QString& interface, const QString& method);

    QDBusConnection bus;
    QString item;
    QDBusServiceWatcher watcher;
    bool isKnown = false;
    bool isShown = false;
};

} // namespace stemvault::status_bar
