#include "LinuxDesktop/StatusBar/DBusMenu.h"
#include "LinuxDesktop/StatusBar/MenuRow.h"
#include "LinuxDesktop/StatusBar/PopUpMenu.h"

#include <QSignalSpy>
#include <gmock/gmock.h>

namespace stemvault::status_bar {
namespace {

MenuItem titled(const std::string& title, std::optional<Color> color = {})
{
    MenuItem item;
    item.title = title;
    if (color)
        item.attributedTitle = AttributedString { title, ForegroundColor { *color, 0, 2 } };
    return item;
}

TEST(MenuRowTests, AColouredMarkBecomesAPicture)
{
    const struct {
        MenuItem item;
        const char* text;
        QColor middle; ///< Of the icon; invalid for no icon.
        QColor rim;
    } rows[] = {
        { titled("● Big Song", Color::SystemGreen), "Big Song", QColor(0x2E, 0xB8, 0x57),
            QColor(0x2E, 0xB8, 0x57) },
        { titled("○ None", Color::SecondaryLabel), "None", Qt::transparent,
            QColor(0x8E, 0x8E, 0x93) },
        { titled("● plain"), "● plain", {}, {} },
        { titled("no mark", Color::SystemGreen), "no mark", {}, {} },
        { titled("", Color::SystemGreen), "", {}, {} },
    };
    for (const auto& row : rows) {
        const MenuRow shown = menuRow(row.item);
        EXPECT_EQ(shown.text.toStdString(), row.text);
        EXPECT_EQ(shown.spokenText.toStdString(), row.item.title);
        ASSERT_EQ(!shown.icon.isNull(), row.middle.isValid()) << row.text;
        if (shown.icon.isNull())
            continue;
        EXPECT_EQ(shown.icon.pixelColor(24, 24).alpha(), row.middle.alpha());
        EXPECT_EQ(shown.icon.pixelColor(14, 24).rgb(), row.rim.rgb());
        EXPECT_EQ(shown.icon.pixelColor(2, 2).alpha(), 0);
    }
}

struct Delegate : MenuDelegate {
    std::string title = "first";
    void menuWillOpen(Menu& menu) override { menu.items[0].title = title; }
};

/// A menu as a panel shows it.
struct ShownMenu {
    [[nodiscard]] QVariant property(int row, const char* name)
    {
        return bus.GetProperty(row, name).variant();
    }

    Delegate delegate;
    TrayMenu menu;
    QObject node;
    DBusMenu bus { &node, menu };
};
struct DBusMenuTests : testing::Test, ShownMenu { };

TEST_F(DBusMenuTests, HoweverAPanelOpensTheMenuItsRowsAreRight)
{
    int chosen = 0;
    MenuItem other = titled("a_b & c\n");
    other.action = [&chosen] { ++chosen; };
    other.keyEquivalent = ",";
    menu.setMenu({ { titled("as built"), other } }, &delegate);
    const QSignalSpy updates(&bus, &DBusMenu::LayoutUpdated);
    const auto firstRow = [this] {
        DBusMenuLayout layout;
        bus.GetLayout(0, -1, {}, layout);
        return layout.children.at(0).properties["label"].toString().toStdString();
    };
    EXPECT_FALSE(bus.AboutToShow(1)) << "no sub-menu";
    EXPECT_EQ(firstRow(), "first") << "a panel that only reads";
    delegate.title = "second";
    EXPECT_TRUE(bus.AboutToShow(0));
    EXPECT_FALSE(bus.AboutToShow(0)) << "nothing new since";
    EXPECT_EQ(firstRow(), "second");
    delegate.title = "third";
    bus.Event(0, "opened", QDBusVariant(""), 0);
    EXPECT_EQ(updates.size(), 2);
    EXPECT_EQ(property(1, "label").toString(), "third");
    EXPECT_EQ(property(2, "label").toString(), "a__b & c␊");
    for (const auto& [key, name] : { std::pair(",", "comma"), std::pair("q", "q") }) {
        MenuItem row = titled("row");
        row.keyEquivalent = key;
        TrayMenu keys;
        keys.setMenu({ { row } }, &delegate);
        const QVariant shortcut = DBusMenu(&node, keys).GetProperty(1, "shortcut").variant();
        EXPECT_EQ(
            shortcut.value<QList<QStringList>>(), QList({ QStringList({ "Control", name }) }));
    }
    EXPECT_EQ(property(9, "label").toString(), "");

    EXPECT_THAT(bus.EventGroup({ { 2, "clicked", QDBusVariant(""), 0 },
                    { 7, "clicked", QDBusVariant(""), 0 } }),
        testing::ElementsAre(7));
    EXPECT_EQ(chosen, 0) << "the panel has its answer first";
    QCoreApplication::processEvents();
    EXPECT_EQ(chosen, 1);
}

TEST_F(DBusMenuTests, AnOpenMenuStaysAsItIs)
{
    enum Step { AboutToShow, Opened, Closed, Read };
    const struct {
        const char* what;
        std::vector<Step> before; ///< Taken while the title is "first".
        bool isUpdatedAtOnce;
        std::vector<Step> after;
    } rows[] = {
        { "never opened", { Read }, true, {} },
        { "open, then closed", { Read, AboutToShow, Opened }, false, { Closed } },
        { "closed again", { Read, Opened, Closed }, true, {} },
        { "a panel that does not say when it closes the menu", { Read, AboutToShow, Opened }, false,
            { AboutToShow } },
        { "a panel that says only when it opens the menu", { Read, Opened }, false, { Opened } },
        { "a panel that only reads", { Read, Opened }, false, { Read } },
        { "a panel that asks first and never says that it opened", { Read, AboutToShow }, true,
            {} },
    };
    for (const auto& row : rows) {
        ShownMenu panel;
        panel.menu.setMenu({ { titled("as built") } }, &panel.delegate);
        const auto take = [&panel](Step step) {
            DBusMenuLayout layout;
            if (step == AboutToShow)
                panel.bus.AboutToShow(0);
            else if (step == Read)
                panel.bus.GetLayout(0, -1, {}, layout);
            else
                panel.bus.Event(0, step == Opened ? "opened" : "closed", QDBusVariant(""), 0);
        };
        for (const Step step : row.before)
            take(step);
        QSignalSpy updates(&panel.bus, &DBusMenu::ItemsPropertiesUpdated);
        panel.delegate.title = "second";
        panel.menu.updateUnlessOpen();
        EXPECT_EQ(panel.property(1, "label"), row.isUpdatedAtOnce ? "second" : "first") << row.what;
        EXPECT_EQ(updates.size(), row.isUpdatedAtOnce ? 1 : 0) << row.what;
        for (const Step step : row.after)
            take(step);
        EXPECT_EQ(panel.property(1, "label"), "second") << row.what;
        EXPECT_EQ(updates.size(), 1) << row.what;
    }
}

TEST(PopUpMenuTests, AnOpenMenuStaysAsItIs)
{
    Delegate delegate;
    TrayMenu menu;
    menu.setMenu({ { titled("as built") } }, &delegate);
    PopUpMenu popUp(menu);
    const auto shown = [&] {
        return popUp.actions().at(0)->text() + menu.items()[0].title.c_str();
    };
    popUp.popup({ 0, 0 });
    delegate.title = "second";
    menu.updateUnlessOpen();
    EXPECT_EQ(shown(), "firstfirst");
    popUp.close();
    popUp.popup({ 0, 0 });
    EXPECT_EQ(shown(), "secondsecond");
    popUp.close();
}

TEST_F(DBusMenuTests, APanelThatShowsIconsUnscaledGetsSmallOnes)
{
    delegate.title = "● Big Song";
    menu.setMenu({ { titled("● Big Song", Color::SystemGreen) } }, &delegate);
    for (const auto& [desktop, height] : std::vector<std::pair<const char*, int>> {
             { "GNOME", 48 }, { "MATE", 16 }, { "GNOME-Flashback:GNOME", 16 } }) {
        qputenv("XDG_CURRENT_DESKTOP", desktop);
        const QByteArray icon = property(1, "icon-data").toByteArray();
        EXPECT_EQ(QImage::fromData(icon).height(), height) << desktop;
    }
    qunsetenv("XDG_CURRENT_DESKTOP");
}

} // namespace
} // namespace stemvault::status_bar
