#pragma once

#include <QDBusConnection>
#include <QObject>
#include <QString>

#include <functional>

namespace stemvault::workspace {

/// Calls back when the user's service manager creates or removes a unit for an application; the
/// larger desktops start their applications in units. Does nothing if there is no such manager.
/// Main thread only.
class UnitSignals : public QObject {
    Q_OBJECT

public:
    UnitSignals(QDBusConnection bus, std::function<void()> onChange);

private:
    Q_SLOT void unitChanged(const QString& unit);

    const std::function<void()> changed;
};

} // namespace stemvault::workspace
