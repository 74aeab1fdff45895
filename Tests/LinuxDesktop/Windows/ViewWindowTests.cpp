#include "LinuxDesktop/QtTest.h"
#include "LinuxDesktop/Windows/DisplayText.h"
#include "LinuxDesktop/Windows/SymbolImage.h"
#include "LinuxDesktop/Windows/ViewControls.h"
#include "LinuxDesktop/Windows/ViewStyle.h"
#include "LinuxDesktop/Windows/ViewText.h"
#include "LinuxDesktop/Windows/ViewWindow.h"

#include <QApplication>
#include <QScreen>
#include <QScrollBar>

namespace stemvault::windows {
namespace {

Button button(const std::string& title)
{
    return { Text { title }, [] {}, Button::Style::Bordered, ControlSize::Small, {} };
}

View page(std::vector<View> children)
{
    View made = Stack { Stack::Axis::Vertical, {}, 0, std::move(children) };
    made.width = 480;
    return made;
}

/// A list of rows, each with a text and a button.
View list(int rows)
{
    Stack made { Stack::Axis::Vertical, {}, 4, {}, true };
    for (int i = 0; i < rows; ++i) {
        made.children.push_back(Stack { Stack::Axis::Horizontal, {}, 4,
            { Text { "row " + std::to_string(i) }, Spacer {}, button(std::to_string(i)) } });
        made.children.back().id = std::to_string(i);
    }
    return made;
}

struct PaintCounter : QObject {
    bool eventFilter(QObject* /*watched*/, QEvent* event) override
    {
        count += event->type() == QEvent::Paint ? 1 : 0;
        return false;
    }
    int count = 0;
};

ViewButton* find(const ViewWindow& window, const char* title)
{
    for (auto* each : childrenOf<ViewButton>(window))
        if (each->isVisible() && each->text() == QLatin1String(title))
            return each;
    return nullptr;
}

TEST(ViewWindowTests, ADrawingKeepsTheKeyboardsPlaceAndTheScrollPosition)
{
    int rows = 500;
    bool hasMore = false;
    ViewWindow window([&] {
        std::vector<View> children { button("Choose"), list(rows) };
        if (hasMore)
            children.insert(children.begin(), button("Clear"));
        return page(std::move(children));
    });
    window.show();
    window.activateWindow();
    EXPECT_LE(window.height(), window.screen()->availableGeometry().height());
    QScrollBar* scroll = nullptr;
    for (auto* area : window.findChildren<QScrollArea*>())
        if (dynamic_cast<ListArea*>(area))
            scroll = area->verticalScrollBar();
    EXPECT_TRUE(happens([scroll] { return scroll->maximum() > 0; })) << "500 rows scroll";
    find(window, "Choose")->setFocus();
    scroll->setValue(700);
    hasMore = true;
    window.draw();
    ASSERT_TRUE(find(window, "Clear"));
    EXPECT_EQ(window.focusWidget(), find(window, "Choose")) << "not on what came in its place";
    EXPECT_EQ(scroll->value(), 700);
    find(window, "Clear")->setFocus();
    QTest::keyClick(&window, Qt::Key_Tab);
    EXPECT_EQ(window.focusWidget(), find(window, "Choose")) << "in the order in which it is read";
    rows = 2;
    window.draw();
    EXPECT_TRUE(happens([scroll] { return scroll->maximum() == 0; }));
    EXPECT_LT(window.height(), 300) << "as high as its content";
}

TEST(ViewWindowTests, TextsTakeTheLinesTheyNeedOrLoseTheirMiddle)
{
    const std::string name(200, 'x');
    std::string text = "short";
    ViewWindow window([&] {
        Text oneLine { text };
        oneLine.lines = Text::Lines::OneTruncatedInTheMiddle;
        return page({ Text { text }, oneLine });
    });
    window.show();
    const int before = window.height();
    text = name + "<b>&\n";
    window.draw();
    EXPECT_GT(window.height(), 2 * before) << "it wraps within the name";
    EXPECT_EQ(window.width(), 480);
    const auto texts = childrenOf<ViewText>(window);
    EXPECT_EQ(texts.at(0)->text(), texts.at(1)->text());
    EXPECT_TRUE(texts.at(1)->toolTip().contains("&lt;b&gt;&amp;")) << "the whole can be read";
    EXPECT_TRUE(texts.at(0)->toolTip().isEmpty());
}

TEST(ViewWindowTests, AWindowThatGrowsStaysOnTheScreen)
{
    int rows = 1;
    ViewWindow window([&] { return page({ list(rows) }); });
    const QRect area = window.screen()->availableGeometry();
    window.show();
    window.move(40, area.bottom() - window.height() - 10);
    const int left = window.y();
    window.draw();
    EXPECT_EQ(window.y(), left) << "it stays where the user left it";
    for (rows = 8; rows < 300; rows *= 6) {
        window.draw();
        EXPECT_GE(window.y(), area.top()) << rows;
        EXPECT_LE(window.frameGeometry().bottom(), area.bottom()) << rows;
    }
    EXPECT_EQ(window.x(), 40);
}

TEST(ViewWindowTests, NeverDoTheListAndTheWindowScrollSideBySide)
{
    int texts = 0;
    ViewWindow window([&] {
        std::vector<View> children(static_cast<std::size_t>(texts), Text { "a line" });
        children.push_back(list(40));
        return page(std::move(children));
    });
    window.show();
    const auto scrolling = [&window] {
        int count = 0;
        for (auto* area : window.findChildren<QScrollArea*>())
            count += area->verticalScrollBar()->maximum() > 0 ? 1 : 0;
        return count;
    };
    for (const int count : { 1, 10, 20, 40, 200 }) {
        texts = count;
        window.draw();
        EXPECT_TRUE(happens([&] { return scrolling() == 1; })) << count << " lines above the list";
    }
}

TEST(ViewWindowTests, EveryPathCanBeReadInFullSomewhere)
{
    std::string path;
    for (int i = 0; i < 60; ++i)
        path += "/folder number " + std::to_string(i);
    for (const auto lines : { Text::Lines::AsNeeded, Text::Lines::OneTruncatedInTheMiddle }) {
        Text text { path };
        text.lines = lines;
        ViewWindow window([&] { return page({ text }); });
        window.show();
        const auto* shown = childrenOf<ViewText>(window).front();
        EXPECT_LT(shown->text().size(), 300) << "the window itself stays small";
        QString tip = shown->toolTip();
        EXPECT_EQ(tip.remove(QChar(0x200B)), QStringLiteral("<qt>%1</qt>").arg(path.c_str()));
        EXPECT_EQ(shown->accessibleDescription().toStdString(), path) << "a screen reader says it";
    }
    EXPECT_TRUE(toolTipText(QString(100, u'x')).contains(QChar(0x200B)))
        << "a long name does not make the tip wider than the screen";
}

TEST(ViewWindowTests, ATextWithRoomToTheRightTakesOneLine)
{
    for (const char* family : { "DejaVu Sans", "Noto Sans", "Cantarell", "Sans" })
        for (int size = 18; size < 40; ++size) {
            QFont font(QString::fromLatin1(family));
            font.setPointSizeF(size / 2.0);
            QApplication::setFont(font);
            ViewText text;
            text.show({ "Not set — required for Create Stemvault Playlist" });
            EXPECT_LT(text.heightForWidth(text.sizeHint().width()), 2 * text.fontMetrics().height())
                << family << ' ' << size / 2.0;
        }
    QApplication::setFont(QFont());
}

TEST(ViewWindowTests, WhatControlsShowEndsAtOneEdge)
{
    ViewWindow window([] {
        const auto row = [](View last) {
            return Stack { Stack::Axis::Horizontal, {}, 6, { Spacer {}, std::move(last) } };
        };
        View group = Stack { Stack::Axis::Vertical, {}, 0,
            { row(button("Choose")), row(Toggle { "", true, [](bool) {}, ControlSize::Small }),
                row(Button { Symbol { "minus.circle" }, [] {}, Button::Style::Plain,
                    ControlSize::Regular, "Remove" }) } };
        group.padding = Padding::standard();
        return page({ std::move(group) });
    });
    setSymbolFolder(STEMVAULT_RESOURCES "/Symbols");
    window.show();
    const QImage picture = window.grab().toImage();
    const QRgb background = picture.pixel(0, 0);
    for (auto* control : window.findChildren<QAbstractButton*>()) {
        const QRect place(control->mapTo(&window, QPoint()), control->size());
        int edge = 0;
        for (int x = place.left(); x < picture.width(); ++x)
            for (int y = place.top(); y < place.bottom(); ++y)
                if (picture.pixel(x, y) != background)
                    edge = x;
        // A round symbol does not quite reach the edge of its square.
        EXPECT_NEAR(edge, 463, 2) << control->metaObject()->className() << ' ' << place.top();
    }
}

TEST(ViewWindowTests, AControlShowsTheFocusAndThePointer)
{
    ViewWindow window([] {
        return page({ button("Choose"), Toggle { "Launch", false, [](bool) {}, {} } });
    });
    window.show();
    window.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
    for (auto* control : window.findChildren<QAbstractButton*>()) {
        const char* kind = control->metaObject()->className();
        const QImage plain = control->grab().toImage();
        control->setFocus();
        EXPECT_NE(control->grab().toImage(), plain) << kind;
        control->clearFocus();
        EXPECT_EQ(control->grab().toImage(), plain) << kind;
    }
    auto* pointed = find(window, "Choose");
    PaintCounter paints;
    pointed->installEventFilter(&paints);
    const QImage plain = pointed->grab().toImage();
    for (const bool isThere : { true, false }) {
        paints.count = 0;
        pointed->setAttribute(Qt::WA_UnderMouse, isThere);
        QEnterEvent enter({}, {}, {});
        QEvent leave(QEvent::Leave);
        QCoreApplication::sendEvent(pointed, isThere ? &enter : &leave);
        EXPECT_TRUE(happens([&] { return paints.count > 0; })) << isThere;
        EXPECT_EQ(pointed->grab().toImage() != plain, isThere);
    }
}

TEST(ViewWindowTests, AControlIsUsedByTheKeyboardAndByTheMouse)
{
    int presses = 0;
    std::vector<bool> switched;
    ViewWindow window([&] {
        Button counted = button("Choose");
        counted.action = [&] { ++presses; };
        const auto note = [&](bool isOn) { switched.push_back(isOn); };
        return page({ counted, Toggle { "Launch", false, note, {} } });
    });
    window.show();
    for (const Qt::Key key : { Qt::Key_Return, Qt::Key_Enter, Qt::Key_Space, Qt::Key_A })
        QTest::keyClick(find(window, "Choose"), key);
    EXPECT_EQ(presses, 3);
    auto* toggle = childrenOf<ViewToggle>(window).front();
    QTest::mouseClick(toggle, Qt::LeftButton, {}, QPoint(1, 1));
    EXPECT_THAT(switched, ElementsAre(true)) << "its title belongs to it";
}

TEST(ViewWindowTests, TheFocusStaysInSight)
{
    ViewWindow window([] { return page({ list(500) }); });
    window.show();
    window.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
    EXPECT_TRUE(find(window, "400")->visibleRegion().isEmpty());
    find(window, "400")->setFocus();
    EXPECT_TRUE(happens([&] { return !find(window, "400")->visibleRegion().isEmpty(); }));
}

TEST(ViewWindowTests, TheTextsFollowTheDesktopsFont)
{
    ViewWindow window([] { return page({ Text { "a line" } }); });
    window.show();
    int before = 0;
    for (const int pixels : { 10, 30 }) {
        QFont chosen;
        chosen.setPixelSize(pixels);
        QApplication::setFont(chosen);
        EXPECT_TRUE(happens([&] {
            return childrenOf<ViewText>(window).front()->font().pixelSize() == pixels;
        })) << pixels;
        EXPECT_GT(window.height(), before);
        before = window.height();
    }
    QApplication::setFont(QFont());
}

TEST(ViewWindowTests, ASwitchShowsWhatBecameOfAChange)
{
    std::vector<bool> asked;
    ViewWindow window([&] {
        return page({ Toggle { "Launch", false, [&](bool isOn) { asked.push_back(isOn); }, {} } });
    });
    window.show();
    auto* toggle = childrenOf<ViewToggle>(window).front();
    toggle->click();
    EXPECT_TRUE(toggle->isChecked());
    window.draw();
    EXPECT_FALSE(toggle->isChecked()) << "refused";
    EXPECT_THAT(asked, ElementsAre(true)) << "going back is no change by the user";
}

} // namespace
} // namespace stemvault::windows
