#pragma once

#include <QDBusAbstractAdaptor>
#include <QVariantMap>

#include <functional>

namespace stemvault::application {

/// The D-Bus interface by which a desktop controls a running program that the bus can start. This
/// program opens no files and has no further actions, so each method only activates it.
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

} // namespace stemvault::application
