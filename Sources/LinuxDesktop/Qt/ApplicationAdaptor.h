#pragma once

#include <QDBusAbstractAdaptor>
#include <QVariantMap>

#include <functional>

namespace stemvault {

/// What a desktop may ask of the running program by its bus name, as the Desktop Entry
/// Specification has it. There is nothing to open and there are no further actions: each of them
/// activates the program.
class ApplicationAdaptor final : public QDBusAbstractAdaptor {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Application")
public:
    explicit ApplicationAdaptor(QObject* node) : QDBusAbstractAdaptor(node) { }

    std::function<void()> onActivate;

public Q_SLOTS:
    void Activate(const QVariantMap& platformData);
    void Open(const QStringList& uris, const QVariantMap& platformData);
    void ActivateAction(
        const QString& name, const QVariantList& parameter, const QVariantMap& platformData);
};

} // namespace stemvault
