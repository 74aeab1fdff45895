#pragma once

#include <QDBusAbstractAdaptor>
#include <QVariantMap>

#include <functional>

namespace stemvault {

/// What a desktop may ask of the running program by its bus name, as it asks every program that the
/// bus starts. There is nothing to open and there are no further actions: each of them
/// activates the program.
class ApplicationAdaptor final : public QDBusAbstractAdaptor {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Application")
public:
    explicit ApplicationAdaptor(QObject* node) : QDBusAbstractAdaptor(node) { }

    std::function<void()> onActivate;

    Q_SLOT void Activate(const QVariantMap& platformData);
    Q_SLOT void Open(const QStringList& uris, const QVariantMap& platformData);
    Q_SLOT void ActivateAction(
        const QString& name, const QVariantList& parameter, const QVariantMap& platformData);
};

} // namespace stemvault
