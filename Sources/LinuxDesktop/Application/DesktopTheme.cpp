#include "LinuxDesktop/Application/DesktopTheme.h"

#include "Foundation/Owned.h"

#include <QGuiApplication>
#include <QSettings>
#include <QStandardPaths>

#include <algorithm>
#include <cctype>
#include <cstdint>

namespace stemvault::application {

namespace {

/// Reads the fields of an XSETTINGS text one after the other. Once a field
/// reaches past the end, it and all later ones are empty.
class Fields {
public:
    explicit Fields(std::string_view whole) : rest(whole)
    {
        isMostSignificantFirst = number(1) == 1;
        skip(3);
    }

    [[nodiscard]] bool isWhole() const { return isGood; }

    [[nodiscard]] std::uint32_t number(std::size_t size)
    {
        std::uint32_t value = 0;
        const std::string_view bytes = text(size);
        for (std::size_t i = 0; i < bytes.size(); ++i) {
            const std::size_t place = isMostSignificantFirst ? size - 1 - i : i;
            value |= std::uint32_t { static_cast<unsigned char>(bytes[i]) } << (8 * place);
        }
        return value;
    }

    [[nodiscard]] std::string_view text(std::size_t size)
    {
        isGood = isGood && size <= rest.size();
        if (!isGood)
            return {};
        const std::string_view taken = rest.substr(0, size);
        rest.remove_prefix(size);
        return taken;
    }

    /// Reads a text that is padded to a multiple of four bytes.
    [[nodiscard]] std::string_view paddedText(std::size_t size)
    {
        const std::string_view taken = text(size);
        skip((4 - size % 4) % 4);
        return taken;
    }

    void skip(std::size_t size) { static_cast<void>(text(size)); }

private:
    std::string_view rest;
    bool isMostSignificantFirst = false;
    bool isGood = true;
};

enum SettingType : std::uint32_t { Integer = 0, String = 1, Color = 2 };

std::optional<bool> preferenceInFile()
{
    const QString file = QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation)
        + QStringLiteral("/gtk-3.0/settings.ini");
    const QVariant value = QSettings(file, QSettings::IniFormat)
                               .value(QStringLiteral("Settings/gtk-application-prefer-dark-theme"));
    if (!value.isValid())
        return std::nullopt;
    return value.toString() == QLatin1String("1") || value.toBool();
}

} // namespace

// The text holds the byte order (one byte), three unused bytes, a serial number and
// the number of settings. Each setting: type, size of the name, name, serial number, value.
std::optional<std::string> themeOfXSettings(std::string_view settings)
{
    Fields fields(settings);
    fields.skip(4);
    const std::uint32_t count = fields.number(4);
    for (std::uint32_t i = 0; i < count && fields.isWhole(); ++i) {
        const std::uint32_t type = fields.number(1);
        fields.skip(1);
        const std::string_view name = fields.paddedText(fields.number(2));
        fields.skip(4);
        if (type == String) {
            const std::string_view value = fields.paddedText(fields.number(4));
            if (name == "Net/ThemeName" && fields.isWhole())
                return std::string(value);
        } else {
            fields.skip(type == Color ? 8 : 4);
        }
    }
    return std::nullopt;
}

bool isDarkTheme(std::string_view name)
{
    std::string words(name);
    std::ranges::transform(
        words, words.begin(), [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    constexpr std::string_view dark = "dark";
    const auto isLetter = [&](std::size_t place) {
        return place < words.size() && std::isalpha(static_cast<unsigned char>(words[place])) != 0;
    };
    for (std::size_t start = words.find(dark); start != std::string::npos;
         start = words.find(dark, start + 1))
        if ((start == 0 || !isLetter(start - 1)) && !isLetter(start + dark.size()))
            return true;
    return false;
}

DesktopTheme::DesktopTheme() : connection(nullptr, &xcb_disconnect)
{
    if (QGuiApplication::platformName() == QLatin1String("xcb"))
        connection.reset(xcb_connect(nullptr, nullptr));
    if (!connection || xcb_connection_has_error(connection.get())) {
        read();
        return;
    }
    selection = atom("_XSETTINGS_S0");
    settings = atom("_XSETTINGS_SETTINGS");
    notifier = std::make_unique<QSocketNotifier>(
        xcb_get_file_descriptor(connection.get()), QSocketNotifier::Read);
    connect(notifier.get(), &QSocketNotifier::activated, this, &DesktopTheme::handleSocket);
    // A new manager announces itself to the root window.
    const std::uint32_t events = XCB_EVENT_MASK_STRUCTURE_NOTIFY;
    xcb_change_window_attributes(connection.get(),
        xcb_setup_roots_iterator(xcb_get_setup(connection.get())).data->root, XCB_CW_EVENT_MASK,
        &events);
    findManager();
}

xcb_atom_t DesktopTheme::atom(std::string_view name) const
{
    const auto asked =
        xcb_intern_atom(connection.get(), 0, static_cast<std::uint16_t>(name.size()), name.data());
    const auto answer = takeOwnership(xcb_intern_atom_reply(connection.get(), asked, nullptr));
    return answer ? answer->atom : xcb_atom_t { XCB_ATOM_NONE };
}

void DesktopTheme::handleSocket()
{
    bool isNews = false;
    while (const auto event = takeOwnership(xcb_poll_for_event(connection.get()))) {
        const auto type = event->response_type & 0x7FU;
        isNews = isNews || type == XCB_CLIENT_MESSAGE || type == XCB_DESTROY_NOTIFY
            || type == XCB_PROPERTY_NOTIFY;
    }
    if (xcb_connection_has_error(connection.get()))
        notifier->setEnabled(false);
    else if (isNews)
        findManager();
}

void DesktopTheme::findManager()
{
    const auto answer = takeOwnership(xcb_get_selection_owner_reply(
        connection.get(), xcb_get_selection_owner(connection.get(), selection), nullptr));
    manager = answer ? answer->owner : xcb_window_t { XCB_WINDOW_NONE };
    const std::uint32_t events = XCB_EVENT_MASK_PROPERTY_CHANGE | XCB_EVENT_MASK_STRUCTURE_NOTIFY;
    if (manager != XCB_WINDOW_NONE)
        xcb_change_window_attributes(connection.get(), manager, XCB_CW_EVENT_MASK, &events);
    xcb_flush(connection.get());
    read();
}

void DesktopTheme::read()
{
    constexpr std::uint32_t longest = 64 * 1024; // In units of four bytes.
    std::optional<std::string> theme;
    if (manager != XCB_WINDOW_NONE) {
        const auto asked = xcb_get_property(
            connection.get(), 0, manager, settings, XCB_GET_PROPERTY_TYPE_ANY, 0, longest);
        if (const auto answer =
                takeOwnership(xcb_get_property_reply(connection.get(), asked, nullptr)))
            theme =
                themeOfXSettings({ static_cast<const char*>(xcb_get_property_value(answer.get())),
                    static_cast<std::size_t>(xcb_get_property_value_length(answer.get())) });
    }
    const bool before = dark;
    dark = (theme && isDarkTheme(*theme)) || preferenceInFile().value_or(false);
    if (dark != before)
        Q_EMIT changed();
}

} // namespace stemvault::application
