#include "LinuxDesktop/Application/Appearance.h"

#include <QApplication>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusServiceWatcher>
#include <QPalette>
#include <QSettings>
#include <QStandardPaths>

#include <optional>
#include <utility>

namespace stemvault::application {

namespace {

const QString service = QStringLiteral("org.freedesktop.portal.Desktop");
const QString path = QStringLiteral("/org/freedesktop/portal/desktop");
const QString settings = QStringLiteral("org.freedesktop.portal.Settings");
const QString group = QStringLiteral("org.freedesktop.appearance");
const QString colorScheme = QStringLiteral("color-scheme");
constexpr uint preferDark = 1;
constexpr uint preferLight = 2;

// The portal may wrap the value in one more variant than it declares.
uint numberOf(QVariant value)
{
    while (value.canConvert<QDBusVariant>())
        value = value.value<QDBusVariant>().variant();
    return value.toUInt();
}

/// A window colour in Plasma's settings; absent until the user has chosen a colour scheme.
std::optional<QColor> colorOfPlasma(const QString& role)
{
    const QString file =
        QStandardPaths::locate(QStandardPaths::GenericConfigLocation, QStringLiteral("kdeglobals"));
    const QStringList parts = QSettings(file, QSettings::IniFormat)
                                  .value(QStringLiteral("Colors:Window/") + role)
                                  .toStringList();
    if (parts.size() < 3)
        return std::nullopt;
    const QColor color(parts[0].toInt(), parts[1].toInt(), parts[2].toInt());
    return color.isValid() ? std::optional(color) : std::nullopt;
}

bool isDark(const QColor& text, const QColor& window)
{
    return text.lightness() > window.lightness();
}

bool isDark(const QPalette& palette)
{
    return isDark(palette.color(QPalette::WindowText), palette.color(QPalette::Window));
}

struct Shades {
    QRgb window, base, alternateBase, button, toolTip, text, faint, highlight, link;
};

constexpr Shades darkShades { 0xFF28282C, 0xFF1E1E21, 0xFF252529, 0xFF3A3A40, 0xFF3A3A40,
    0xFFECECEE, 0xFF808086, 0xFF4B6EF5, 0xFF8FA8FF };
constexpr Shades lightShades { 0xFFEFEFEF, 0xFFFFFFFF, 0xFFF7F7F7, 0xFFEFEFEF, 0xFFFFFFDC,
    0xFF000000, 0xFF8A8A8E, 0xFF308CC6, 0xFF0000FF };

QPalette paletteOf(const Shades& shades)
{
    QPalette palette { QColor(shades.button), QColor(shades.window) };
    palette.setColor(QPalette::Base, shades.base);
    palette.setColor(QPalette::AlternateBase, shades.alternateBase);
    palette.setColor(QPalette::ToolTipBase, shades.toolTip);
    palette.setColor(QPalette::Highlight, shades.highlight);
    palette.setColor(QPalette::HighlightedText, Qt::white);
    palette.setColor(QPalette::Link, shades.link);
    for (const auto role :
        { QPalette::WindowText, QPalette::Text, QPalette::ButtonText, QPalette::ToolTipText })
        palette.setColor(role, shades.text);
    palette.setColor(QPalette::BrightText, isDark(palette) ? QColor(shades.text) : Qt::white);
    palette.setColor(QPalette::PlaceholderText, shades.faint);
    for (const auto role : { QPalette::WindowText, QPalette::Text, QPalette::ButtonText })
        palette.setColor(QPalette::Disabled, role, shades.faint);
    return palette;
}

} // namespace

// Asks the portal at once if it runs, and again whenever it appears, but never
// starts it. The signal match names no service, because the toolkit would then
// block to look up the service's owner.
Appearance::Appearance(QDBusConnection sessionBus)
    : bus(std::move(sessionBus)), initialPalette(QApplication::palette())
{
    connect(&theme, &DesktopTheme::changed, this, &Appearance::apply);
    auto* portal =
        new QDBusServiceWatcher(service, bus, QDBusServiceWatcher::WatchForRegistration, this);
    connect(portal, &QDBusServiceWatcher::serviceRegistered, this, &Appearance::askPortal);
    qDBusRegisterMetaType<QDBusVariant>(); // Without it the slot is not found.
    bus.connect(QString(), path, settings, QStringLiteral("SettingChanged"), { group }, QString(),
        this, SLOT(settingChanged(QString, QString, QDBusVariant)));
    bus.connect(QString(), QStringLiteral("/KGlobalSettings"),
        QStringLiteral("org.kde.KGlobalSettings"), QStringLiteral("notifyChange"), this,
        SLOT(plasmaChanged(int, int)));
    askPortal();
    apply();
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
            take(reply.value().variant());
    });
}

void Appearance::settingChanged(
    const QString& /*group*/, const QString& key, const QDBusVariant& value)
{
    if (key == colorScheme)
        take(value.variant());
}

// Plasma announces new colours to its own programs by this signal, even if no portal runs.
void Appearance::plasmaChanged(int what, int /*detail*/)
{
    constexpr int colors = 0;
    if (what != colors)
        return;
    const auto text = colorOfPlasma(QStringLiteral("ForegroundNormal"));
    const auto window = colorOfPlasma(QStringLiteral("BackgroundNormal"));
    if (text && window)
        take(isDark(*text, *window) ? preferDark : preferLight);
}

void Appearance::take(const QVariant& value)
{
    preference = numberOf(value);
    apply();
}

// A preference of the portal or Plasma comes first; without one, the theme
// decides. If neither is dark, the toolkit's own palette is used, unless it is
// dark and outdated: the toolkit reads Plasma's colours only once.
void Appearance::apply()
{
    const bool dark = preference == preferDark || (preference != preferLight && theme.isDark());
    const bool mustBeLight = preference == preferLight || hasBeenDark;
    hasBeenDark = hasBeenDark || dark;
    if (dark)
        use(isDark(initialPalette) ? initialPalette : paletteOf(darkShades));
    else
        use(mustBeLight && isDark(initialPalette) ? paletteOf(lightShades) : initialPalette);
}

void Appearance::use(const QPalette& palette)
{
    if (isDark(palette) != isDark(QApplication::palette()))
        QApplication::setPalette(palette);
}

} // namespace stemvault::application
