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
    ApplicationAdaptor(QObject* node, std::function<void()> activation);

public Q_SLOTS:
    void Activate(const QVariantMap& platformData);
    void Open(const QStringList& uris, const QVariantMap& platformData);
    void ActivateAction(
        const QString& name, const QVariantList& parameter, const QVariantMap& platformData);

private:
    std::function<void()> activate;
};

} // namespace stemvault
