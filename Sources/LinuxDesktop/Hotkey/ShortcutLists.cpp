#include "LinuxDesktop/Hotkey/ShortcutLists.h"

#include <QDBusMessage>
#include <QDBusReply>
#include <QEventLoop>
#include <QProcess>
#include <QStandardPaths>
#include <QTimer>

#include <chrono>
#include <optional>
#include <sstream>

namespace stemvault::hotkey {

namespace {

constexpr int timeToAnswer = 3000; ///< Milliseconds to wait for each reply over the bus.
constexpr std::chrono::seconds timeOfTool { 3 };

/// Where GNOME and its derivatives keep an entry in their settings.
struct Settings {
    QString list; ///< Schema and key of the list of entries; empty if the desktop has no such list.
    QString element; ///< The element of that list that refers to the entry.
    QString entry; ///< Schema and path of the entry.
    QString commandKey;
};

/// The trimmed output of one of the desktop's tools. Absent if the tool is not installed, fails, or
/// takes more than a few seconds. Runs the event loop meanwhile.
std::optional<QString> outputOf(const QString& program, const QStringList& arguments)
{
    QProcess tool;
    QEventLoop loop;
    QObject::connect(&tool, &QProcess::finished, &loop, &QEventLoop::quit);
    QObject::connect(&tool, &QProcess::errorOccurred, &loop, &QEventLoop::quit);
    QTimer::singleShot(timeOfTool, &loop, &QEventLoop::quit);
    tool.setStandardInputFile(QProcess::nullDevice());
    tool.setStandardErrorFile(QProcess::nullDevice());
    // Queued, because `start` may signal a failure before it returns, when no loop would run yet.
    QMetaObject::invokeMethod(
        &tool, [&] { tool.start(program, arguments); }, Qt::QueuedConnection);
    loop.exec();
    if (tool.state() != QProcess::NotRunning) {
        tool.kill();
        tool.waitForFinished(1000);
        return std::nullopt;
    }
    if (tool.error() != QProcess::UnknownError || tool.exitStatus() != QProcess::NormalExit
        || tool.exitCode() != 0)
        return std::nullopt;
    return QString::fromUtf8(tool.readAllStandardOutput()).trimmed();
}

std::optional<QString> get(const QString& place, const QString& key)
{
    return outputOf(QStringLiteral("gsettings"), { QStringLiteral("get"), place, key });
}

bool set(const QString& place, const QString& key, const QString& value)
{
    return outputOf(QStringLiteral("gsettings"), { QStringLiteral("set"), place, key, value })
        .has_value();
}

/// The text as a string in GVariant's text format.
QString quoted(QString text)
{
    return u'\'' + text.replace(u'\\', QStringLiteral("\\\\")).replace(u'\'', QStringLiteral("\\'"))
        + u'\'';
}

bool isNoKey(const QString& binding)
{
    return binding == QLatin1String("''") || binding == QLatin1String("@as []")
        || binding == QLatin1String("['']");
}

/// The list with the element appended if it is not in it yet. Absent if `list` is malformed.
std::optional<QString> appended(const QString& list, const QString& element)
{
    if (list.contains(element))
        return list;
    if (list == QLatin1String("@as []") || list == QLatin1String("[]"))
        return u'[' + element + u']';
    if (!list.endsWith(u']'))
        return std::nullopt;
    return list.chopped(1) + QStringLiteral(", ") + element + u']';
}

bool addToList(const Settings& settings)
{
    if (settings.list.isEmpty())
        return true;
    const QString schema = settings.list.section(u' ', 0, 0);
    const QString key = settings.list.section(u' ', 1);
    const auto before = get(schema, key);
    const auto after =
        before ? appended(*before, quoted(settings.element)) : std::optional<QString>();
    return after && (*after == *before || set(schema, key, *after));
}

// Changes the list last, because a desktop that watches the list then reads the entry.
bool addToSettings(const Settings& settings, const Shortcut& shortcut)
{
    const auto binding = get(settings.entry, QStringLiteral("binding"));
    if (!binding)
        return false;
    if (isNoKey(*binding)
        && (!set(settings.entry, QStringLiteral("name"),
                quoted(QString::fromStdString(shortcut.name)))
            || !set(settings.entry, settings.commandKey,
                quoted(QString::fromStdString(shortcut.command())))))
        return false;
    return addToList(settings);
}

bool addToGnome(const Shortcut& shortcut, const QDBusConnection& /*bus*/)
{
    const auto schema = QStringLiteral("org.gnome.settings-daemon.plugins.media-keys");
    const auto path = QStringLiteral("/org/gnome/settings-daemon/plugins/media-keys/"
                                     "custom-keybindings/stemvault-connect/");
    return addToSettings(
        { schema + QStringLiteral(" custom-keybindings"), path,
            schema + QStringLiteral(".custom-keybinding:") + path, QStringLiteral("command") },
        shortcut);
}

// Cinnamon's settings expect every element of the list to end in a number.
bool addToCinnamon(const Shortcut& shortcut, const QDBusConnection& /*bus*/)
{
    const auto schema = QStringLiteral("org.cinnamon.desktop.keybindings");
    return addToSettings(
        { schema + QStringLiteral(" custom-list"), QStringLiteral("custom7836"),
            schema
                + QStringLiteral(".custom-keybinding:/org/cinnamon/desktop/keybindings/"
                                 "custom-keybindings/custom7836/"),
            QStringLiteral("command") },
        shortcut);
}

bool addToMate(const Shortcut& shortcut, const QDBusConnection& /*bus*/)
{
    return addToSettings({ {}, {},
                             QStringLiteral("org.mate.control-center.keybinding:"
                                            "/org/mate/desktop/keybindings/stemvault-connect/"),
                             QStringLiteral("action") },
        shortcut);
}

// Xfce stores commands by their key. VoidSymbol is on no keyboard and is shown as no key.
bool addToXfce(const Shortcut& shortcut, const QDBusConnection& /*bus*/)
{
    const auto tool = QStringLiteral("xfconf-query");
    const QStringList channel { QStringLiteral("-c"), QStringLiteral("xfce4-keyboard-shortcuts") };
    const auto place = QStringLiteral("/commands/custom/VoidSymbol");
    const QString command = QString::fromStdString(shortcut.command());
    const auto all = outputOf(tool, channel + QStringList { QStringLiteral("-lv") });
    if (!all)
        return false;
    for (const QString& line : all->split(u'\n'))
        if (line.startsWith(QLatin1String("/commands/custom/")) && line.endsWith(command))
            return true;
    if (all->contains(place))
        return false;
    return outputOf(tool,
        channel
            + QStringList { QStringLiteral("-p"), place, QStringLiteral("-n"), QStringLiteral("-t"),
                QStringLiteral("string"), QStringLiteral("-s"), command })
        .has_value();
}

QDBusMessage lxqtCall(const QString& method)
{
    const auto name = QStringLiteral("org.lxqt.global_key_shortcuts");
    return QDBusMessage::createMethodCall(
        name, QStringLiteral("/daemon"), name + QStringLiteral(".daemon"), method);
}

bool isListedInLxqt(const Shortcut& shortcut, const QDBusConnection& bus, qulonglong id)
{
    auto question = lxqtCall(QStringLiteral("getActionById"));
    question << id;
    const QVariantList answer = bus.call(question, QDBus::BlockWithGui, timeToAnswer).arguments();
    return answer.size() == 6 && answer.at(5).toString().toStdString() == shortcut.command();
}

// LXQt lists no entry without a key, so the entry gets one that hardly any keyboard has.
bool addToLxqt(const Shortcut& shortcut, const QDBusConnection& bus)
{
    const QDBusReply<QList<qulonglong>> ids =
        bus.call(lxqtCall(QStringLiteral("getAllActionIds")), QDBus::BlockWithGui, timeToAnswer);
    if (!ids.isValid())
        return false;
    for (const qulonglong id : ids.value())
        if (isListedInLxqt(shortcut, bus, id))
            return true;
    auto call = lxqtCall(QStringLiteral("addCommandAction"));
    call << QStringLiteral("XF86Launch9") << QString::fromStdString(shortcut.program)
         << QStringList { QString::fromStdString(shortcut.argument) }
         << QString::fromStdString(shortcut.name);
    const QVariantList answer = bus.call(call, QDBus::BlockWithGui, timeToAnswer).arguments();
    return answer.size() == 2 && answer.at(1).toULongLong() != 0;
}

// Plasma reads an installed entry when the session starts, or when the entry is registered by name.
bool addToPlasma(const Shortcut& shortcut, const QDBusConnection& bus)
{
    const auto entry = QStringLiteral("net.stemvault.Connect.AddSelection.desktop");
    if (QStandardPaths::locate(
            QStandardPaths::GenericDataLocation, QStringLiteral("kglobalaccel/") + entry)
            .isEmpty())
        return false;
    const QString name = QString::fromStdString(shortcut.name);
    auto call = QDBusMessage::createMethodCall(QStringLiteral("org.kde.kglobalaccel"),
        QStringLiteral("/kglobalaccel"), QStringLiteral("org.kde.KGlobalAccel"),
        QStringLiteral("doRegister"));
    call << QStringList { entry, QStringLiteral("_launch"), name, name };
    return bus.call(call, QDBus::BlockWithGui, timeToAnswer).type() == QDBusMessage::ReplyMessage;
}

struct List {
    const char* desktop;
    bool (*add)(const Shortcut& shortcut, const QDBusConnection& bus);
};

constexpr List lists[] = {
    { "GNOME", &addToGnome },
    { "Unity", &addToGnome },
    { "ubuntu", &addToGnome },
    { "KDE", &addToPlasma },
    { "XFCE", &addToXfce },
    { "X-Cinnamon", &addToCinnamon },
    { "MATE", &addToMate },
    { "LXQt", &addToLxqt },
};

} // namespace

bool addToShortcutList(
    const std::string& currentDesktop, const Shortcut& shortcut, const QDBusConnection& bus)
{
    std::istringstream names(currentDesktop);
    for (std::string name; std::getline(names, name, ':');)
        for (const List& list : lists)
            if (list.desktop == name)
                return list.add(shortcut, bus);
    return false;
}

} // namespace stemvault::hotkey
