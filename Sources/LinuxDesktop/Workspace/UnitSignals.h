#pragma once

#include <QDBusConnection>
#include <QObject>
#include <QString>

#include <functional>

namespace stemvault {

/// Tells when the user's service manager makes or drops a unit for an application, which is how the
/// larger desktops start theirs. Silent where there is no such manager. Main thread only.
class UnitSignals : public QObject {
    Q_OBJECT

public:
    UnitSignals(QDBusConnection bus, std::function<void()> onChange);

private:
    Q_SLOT void unitChanged(const QString& unit);

    const std::function<void()> changed;
};

} // namespace stemvault
