#include "LinuxDesktop/Qt/QtTest.h"
#include "LinuxDesktop/Qt/Views/ViewControls.h"
#include "LinuxDesktop/Qt/Views/ViewText.h"
#include "LinuxDesktop/Qt/Views/ViewWindow.h"

#include <QScreen>
#include <QScrollBar>

namespace stemvault {
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

/// Rows, each a text with a button.
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

ViewButton* find(const ViewWindow& window, const char* title)
{
    for (auto* each : window.findChildren<ViewButton*>())
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
    const std::string name(300, 'x');
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
    const auto texts = window.findChildren<ViewText*>();
    EXPECT_EQ(texts.at(0)->text(), texts.at(1)->text());
    EXPECT_TRUE(texts.at(1)->toolTip().contains("&lt;b&gt;&amp;")) << "the whole can be read";
    EXPECT_TRUE(texts.at(0)->toolTip().isEmpty());
}

TEST(ViewWindowTests, ASwitchShowsWhatBecameOfAChange)
{
    std::vector<bool> asked;
    ViewWindow window([&] {
        return page({ Toggle { "Launch", false, [&](bool isOn) { asked.push_back(isOn); }, {} } });
    });
    window.show();
    auto* toggle = window.findChild<ViewToggle*>();
    toggle->click();
    EXPECT_TRUE(toggle->isChecked());
    window.draw();
    EXPECT_FALSE(toggle->isChecked()) << "refused";
    EXPECT_THAT(asked, ElementsAre(true)) << "going back is no change by the user";
}

} // namespace
} // namespace stemvault
