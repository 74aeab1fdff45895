#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusServiceWatcher>
#include <QObject>
#include <QString>

namespace stemvault {

/// Registers the status item with the desktop's watcher of such items, whenever there is one: from
/// the start, late, or again after it was restarted. Never waits for it. Knows besides whether any
/// panel shows what the watcher collects.
class TrayHost final : public QObject {
    Q_OBJECT
public:
    /// `itemPath` is the item's object on this connection.
    TrayHost(QDBusConnection connection, QString itemPath);

Q_SIGNALS:
    /// Told once after the start, and at each change.
    void isThere(bool there);

private Q_SLOTS:
    void ask();

private:
    /// What a "no" is taken for: a tentative one is asked about once more.
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

} // namespace stemvault
