#include "LinuxDesktop/Qt/Appearance.h"

#include <QApplication>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusServiceWatcher>
#include <QPalette>

#include <utility>

namespace stemvault {

namespace {

const QString service = QStringLiteral("org.freedesktop.portal.Desktop");
const QString path = QStringLiteral("/org/freedesktop/portal/desktop");
const QString settings = QStringLiteral("org.freedesktop.portal.Settings");
const QString group = QStringLiteral("org.freedesktop.appearance");
const QString colorScheme = QStringLiteral("color-scheme");
constexpr uint preferDark = 1;

// The portal has been known to wrap the value once more than it says.
bool saysDark(QVariant value)
{
    while (value.canConvert<QDBusVariant>())
        value = value.value<QDBusVariant>().variant();
    return value.toUInt() == preferDark;
}

bool isDark(const QPalette& palette)
{
    return palette.color(QPalette::WindowText).lightness()
        > palette.color(QPalette::Window).lightness();
}

QPalette darkPalette()
{
    const QColor text(0xEC, 0xEC, 0xEE);
    const QColor faint(0x80, 0x80, 0x86);
    QPalette palette(QColor(0x3A, 0x3A, 0x40), QColor(0x28, 0x28, 0x2C));
    palette.setColor(QPalette::Base, QColor(0x1E, 0x1E, 0x21));
    palette.setColor(QPalette::AlternateBase, QColor(0x25, 0x25, 0x29));
    palette.setColor(QPalette::ToolTipBase, QColor(0x3A, 0x3A, 0x40));
    palette.setColor(QPalette::Highlight, QColor(0x4B, 0x6E, 0xF5));
    palette.setColor(QPalette::HighlightedText, Qt::white);
    palette.setColor(QPalette::Link, QColor(0x8F, 0xA8, 0xFF));
    for (const auto role : { QPalette::WindowText, QPalette::Text, QPalette::ButtonText,
             QPalette::BrightText, QPalette::ToolTipText })
        palette.setColor(role, text);
    palette.setColor(QPalette::PlaceholderText, faint);
    for (const auto role : { QPalette::WindowText, QPalette::Text, QPalette::ButtonText })
        palette.setColor(QPalette::Disabled, role, faint);
    return palette;
}

} // namespace

// The portal is asked when it is there and again whenever it comes; it is not started for our sake.
// The match names no service, as the toolkit would wait for that service's owner.
Appearance::Appearance(QDBusConnection sessionBus) : bus(std::move(sessionBus))
{
    auto* portal =
        new QDBusServiceWatcher(service, bus, QDBusServiceWatcher::WatchForRegistration, this);
    connect(portal, &QDBusServiceWatcher::serviceRegistered, this, &Appearance::askPortal);
    qDBusRegisterMetaType<QDBusVariant>(); // Without it the slot is not found.
    bus.connect(QString(), path, settings, QStringLiteral("SettingChanged"), { group }, QString(),
        this, SLOT(settingChanged(QString, QString, QDBusVariant)));
    askPortal();
}

void Appearance::askPortal()
{
    auto call = QDBusMessage::createMethodCall(service, path, settings, QStringLiteral("Read"));
    call << group << colorScheme;
    call.setAutoStartService(false);
    auto* watcher = new QDBusPendingCallWatcher(bus.asyncCall(call), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher] {
        watcher->deleteLater();
        if (const QDBusPendingReply<QDBusVariant> reply = *watcher; reply.isValid())
            apply(saysDark(reply.value().variant()));
    });
}

void Appearance::settingChanged(
    const QString& /*group*/, const QString& key, const QDBusVariant& value)
{
    if (key == colorScheme)
        apply(saysDark(value.variant()));
}

void Appearance::apply(bool dark)
{
    if (dark == isOurs || (dark && isDark(QApplication::palette())))
        return;
    isOurs = dark;
    QApplication::setPalette(dark ? darkPalette() : QPalette());
}

} // namespace stemvault
