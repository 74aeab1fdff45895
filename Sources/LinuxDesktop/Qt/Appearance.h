#pragma once

#include <QDBusConnection>
#include <QDBusVariant>
#include <QObject>

namespace stemvault {

/// Follows the desktop's wish for dark windows where nothing else does: no platform theme gives a
/// dark palette, and the settings portal says dark. Asks without waiting; windows open or not
/// change as the answer comes and as it changes.
class Appearance final : public QObject {
    Q_OBJECT
public:
    explicit Appearance(QDBusConnection sessionBus);

private:
    Q_SLOT void settingChanged(const QString& group, const QString& key, const QDBusVariant& value);
    void askPortal();
    void apply(bool dark);

    QDBusConnection bus;
    bool isOurs = false; ///< The palette in use is our dark one.
};

} // namespace stemvault
