#include "LinuxDesktop/Application/AnswerGuard.h"
#include "LinuxDesktop/Dialogs/AlertIcon.h"
#include "LinuxDesktop/Dialogs/AlertWindow.h"
#include "LinuxDesktop/Dialogs/OpenPanelWindow.h"
#include "LinuxDesktop/Dialogs/QtDialogs.h"
#include "LinuxDesktop/Dispatch/QtDispatch.h"
#include "LinuxDesktop/QtTest.h"
#include "Support/TemporaryFolder.h"

#include <QAbstractItemView>
#include <QAccessible>
#include <QApplication>
#include <QClipboard>
#include <QComboBox>
#include <QHelpEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPointer>
#include <QPushButton>
#include <QScreen>
#include <QScrollArea>
#include <QScrollBar>
#include <QToolTip>
#include <QWheelEvent>

#include <algorithm>

namespace stemvault::dialogs {
namespace {

struct QtDialogsTest : testing::Test {
    dispatch::QtDispatch dispatch;
    application::ModalWindows windows { 20ms };
    application::ApplicationIcon icon;
    QtDialogs dialogs { windows, icon };

    /// Runs `act` on the window that opens next, once it accepts keys and clicks.
    template <typename Window, typename Act> void meanwhile(Act act)
    {
        windows.activate();
        dispatch.mainAsync([act] {
            const auto isReady = [] {
                QWidget* window = QApplication::activeModalWidget();
                const bool isOfKind = dynamic_cast<Window*>(window) != nullptr;
                const auto* guard =
                    isOfKind ? window->findChild<application::AnswerGuard*>() : nullptr;
                return guard && guard->takesKeys() && guard->takesClicks();
            };
            ASSERT_TRUE(happens(isReady));
            act(dynamic_cast<Window&>(*QApplication::activeModalWidget()));
        });
    }
    static void press(QWidget& window, Qt::Key key) { QTest::keyClick(window.windowHandle(), key); }
};

QPushButton& button(QWidget& window, const QString& title)
{
    for (auto* candidate : window.findChildren<QPushButton*>())
        if (candidate->text() == title)
            return *candidate;
    throw std::runtime_error("there is no such button");
}

Alert question(std::vector<std::string> buttons)
{
    Alert alert;
    alert.messageText = "Bounce detected";
    alert.informativeText = "Mix & Match.wav\nfrom Session";
    alert.accessoryView = PopUpButton { { 0, 0, 280, 26 }, { "Client A", "Client\nB" } };
    alert.buttons = std::move(buttons);
    return alert;
}

TEST_F(QtDialogsTest, ATextFieldAnswersWithWhatIsTypedOverItsText)
{
    Alert alert = question({ "Create", "Cancel" });
    alert.accessoryView = TextField { { 0, 0, 280, 24 }, "Song\xff\n", true };
    meanwhile<AlertWindow>([](AlertWindow& window) {
        for (const char key : { 'M', 'i', 'x' })
            QTest::keyClick(window.windowHandle(), key);
        press(window, Qt::Key_Return);
    });
    const AlertAnswer answer = dialogs.runModal(alert);
    EXPECT_EQ(answer.response, ModalResponse::alertFirstButton);
    EXPECT_EQ(answer.text, "Mix");
}

TEST_F(QtDialogsTest, NamesOfFoldersAreShownAsPlainText)
{
    Alert alert = question({ "Add" });
    alert.accessoryView = PopUpButton { {}, { "<b>A</b>" } };
    meanwhile<AlertWindow>([](AlertWindow& window) {
        const QString toolTip =
            window.findChild<QComboBox*>()->itemData(0, Qt::ToolTipRole).toString();
        EXPECT_THAT(toolTip.toStdString(), testing::HasSubstr("&lt;b&gt;A&lt;"));
        press(window, Qt::Key_Return);
    });
    (void)dialogs.runModal(alert);

    alert.accessoryView = TextField { {}, "x\u202Egnp.\n", false };
    meanwhile<AlertWindow>([](AlertWindow& window) {
        EXPECT_EQ(window.findChild<QLineEdit*>()->text(), "x\uFFFDgnp.\u240A");
        press(window, Qt::Key_Return);
    });
    EXPECT_EQ(dialogs.runModal(alert).text, "x\u202Egnp.\n") << "left alone";
}

TEST_F(QtDialogsTest, AnAlertAnswersWithTheButtonPressed)
{
    struct Row {
        const char* what;
        std::vector<std::string> buttons;
        std::function<void(AlertWindow&)> act;
        int expected;
    };
    const std::vector<std::string> three { "Add & Go", "Skip", "Cancel" };
    const auto key = [](Qt::Key pressed) {
        return [pressed](AlertWindow& window) { press(window, pressed); };
    };
    const auto close = [](AlertWindow& window) { window.close(); };
    const auto tabAndSpace = [](AlertWindow& window) {
        for (const Qt::Key pressed : { Qt::Key_Tab, Qt::Key_Tab, Qt::Key_Space })
            press(window, pressed);
    };
    const Row rows[] = {
        { "Return presses the first", three, key(Qt::Key_Return), 1000 },
        { "Escape presses the one titled Cancel", three, key(Qt::Key_Escape), 1002 },
        { "Escape presses a lone one", { "Fine" }, key(Qt::Key_Escape), 1000 },
        { "closed without a button", three, close, ModalResponse::stopped },
        { "closing presses a lone one", {}, close, 1000 },
        { "the keyboard goes in the alert's order", three, tabAndSpace, 1001 },
        { "a click", three, [](AlertWindow& window) { button(window, "Skip").click(); }, 1001 },
        { "an ampersand is no shortcut", three,
            [](AlertWindow& window) { button(window, "Add && Go").click(); }, 1000 },
    };
    for (const Row& row : rows) {
        meanwhile<AlertWindow>(row.act);
        EXPECT_EQ(dialogs.runModal(question(row.buttons)).response, row.expected) << row.what;
    }
}

TEST_F(QtDialogsTest, AnAlertThatWarnsBearsABadge)
{
    QPixmap plain(64, 64);
    plain.fill(Qt::gray);
    const auto picture = [&](AlertStyle style) {
        AlertIcon shown(QIcon(plain), style, 64);
        return shown.grab().toImage();
    };
    const QImage informational = picture(AlertStyle::Informational);
    EXPECT_EQ(informational.pixelColor(48, 58), QColor(Qt::gray));
    EXPECT_NE(picture(AlertStyle::Warning), informational);
    EXPECT_NE(picture(AlertStyle::Critical), picture(AlertStyle::Warning));
}

TEST_F(QtDialogsTest, KeysAndClicksMeantForAnotherProgramDoNotAnswer)
{
    application::ModalWindows patientWindows { 1h };
    QtDialogs patientDialogs { patientWindows, icon };
    patientWindows.activate();
    dispatch.mainAsync([] {
        const auto active = [] { return QApplication::activeWindow() != nullptr; };
        ASSERT_TRUE(happens(active));
        QWidget& window = *QApplication::activeWindow();
        for (const Qt::Key key : { Qt::Key_Return, Qt::Key_Space, Qt::Key_Escape, Qt::Key_Down })
            press(window, key);
        ASSERT_EQ(QApplication::activeModalWidget(), &window) << "answered by a stray key";
        QPushButton& skip = button(window, "Skip");
        const QPoint middle = skip.mapTo(&window, skip.rect().center());
        QTest::mouseClick(window.windowHandle(), Qt::LeftButton, {}, middle);
        ASSERT_EQ(QApplication::activeModalWidget(), &window) << "answered by a stray click";
        skip.click();
    });
    const AlertAnswer answer = patientDialogs.runModal(question({ "Add", "Skip", "Cancel" }));
    EXPECT_EQ(answer.response, 1001);
    EXPECT_EQ(answer.indexOfSelectedItem, 0);
}

TEST_F(QtDialogsTest, TheArrowsChooseAndAScreenReaderKnowsWhat)
{
    meanwhile<AlertWindow>([](AlertWindow& window) {
        EXPECT_EQ(window.windowTitle(), "Bounce detected");
        auto* popUp = window.findChild<QComboBox*>();
        EXPECT_EQ(popUp->itemText(1), "Client\u240AB");
        EXPECT_GE(popUp->width(), 280);
        const auto labels =
            QAccessible::queryAccessibleInterface(popUp)->relations(QAccessible::Label);
        ASSERT_EQ(labels.size(), 1);
        EXPECT_EQ(labels[0].first->text(QAccessible::Name), "Bounce detected");
        const auto* accessible = QAccessible::queryAccessibleInterface(&window);
        EXPECT_EQ(accessible->role(), QAccessible::AlertMessage);
        EXPECT_EQ(accessible->text(QAccessible::Description), "Mix & Match.wav\nfrom Session");
        press(window, Qt::Key_Down);
        QWheelEvent turn({}, {}, {}, { 0, 120 }, {}, {}, Qt::NoScrollPhase, false);
        QCoreApplication::sendEvent(popUp, &turn);
        EXPECT_EQ(popUp->currentIndex(), 1) << "the wheel is meant for what is below";
        press(window, Qt::Key_Return);
    });
    const AlertAnswer answer = dialogs.runModal(question({ "Add", "Skip" }));
    EXPECT_EQ(answer.response, 1000);
    EXPECT_EQ(answer.indexOfSelectedItem, 1);
}

TEST_F(QtDialogsTest, TheTextsOfAnAlertCanBeCopied)
{
    meanwhile<AlertWindow>([](AlertWindow& window) {
        QTest::keyClick(window.windowHandle(), Qt::Key_C, Qt::ControlModifier);
        EXPECT_THAT(QGuiApplication::clipboard()->text().toStdString(),
            testing::AllOf(testing::HasSubstr("Bounce detected"),
                testing::HasSubstr("Mix & Match.wav\nfrom Session")));
        press(window, Qt::Key_Return);
    });
    Alert alert = question({ "Add" });
    alert.accessoryView = {};
    EXPECT_EQ(dialogs.runModal(alert).response, 1000);
}

TEST_F(QtDialogsTest, ALongTextScrollsAndTheAlertStaysOnTheScreen)
{
    for (const std::string& notes : { std::string(200, '\n'), std::string(5'000, 'W') }) {
        Alert alert = question({ "Download", "Later" });
        alert.informativeText = notes + "the end";
        meanwhile<AlertWindow>([](AlertWindow& window) {
            const QSize space = window.screen()->availableSize() - QSize(0, 60);
            EXPECT_EQ(window.size().boundedTo(space), window.size()) << "with room for a title";
            auto* bar = window.findChild<QScrollArea*>()->verticalScrollBar();
            button(window, "Later").setFocus();
            press(window, Qt::Key_End);
            EXPECT_EQ(bar->value(), bar->maximum());
            EXPECT_GT(bar->value(), 0);
            press(window, Qt::Key_Return);
        });
        EXPECT_EQ(dialogs.runModal(alert).response, 1001);
    }
}

TEST_F(QtDialogsTest, AnAlertOverAnotherIsAnsweredFirst)
{
    std::vector<int> answers;
    meanwhile<AlertWindow>([&](AlertWindow& outer) {
        meanwhile<AlertWindow>([](AlertWindow& inner) { press(inner, Qt::Key_Escape); });
        answers.push_back(dialogs.runModal(question({ "Replace", "Cancel" })).response);
        button(outer, "Skip").click();
    });
    answers.push_back(dialogs.runModal(question({ "Add", "Skip", "Cancel" })).response);
    EXPECT_THAT(answers, ElementsAre(1001, 1001));
}

TEST_F(QtDialogsTest, APanelGivesTheFolderChosen)
{
    const TemporaryFolder folder;
    const std::string odd = folder.makeFolder("caf\xE9"); // Qt can name only its parent.
    OpenPanel panel { false, true, true, "Use & Go", "Choose.", FileURL(odd + "/missing") };
    meanwhile<OpenPanelWindow>(
        [](OpenPanelWindow& window) { button(window, "Use && Go").click(); });
    const OpenPanelAnswer chosen = dialogs.runModal(panel);
    EXPECT_EQ(chosen.response, ModalResponse::ok);
    EXPECT_EQ(chosen.url, FileURL(folder.path()));

    meanwhile<OpenPanelWindow>([](OpenPanelWindow& window) { press(window, Qt::Key_Escape); });
    EXPECT_EQ(dialogs.runModal(panel).response, ModalResponse::cancel);

    const QByteArray home = qgetenv("HOME");
    qputenv("HOME", QByteArray::fromStdString(folder.path()));
    panel.directoryURL = FileURL("relative");
    meanwhile<OpenPanelWindow>([&](OpenPanelWindow& window) {
        EXPECT_EQ(window.directory().path().toStdString(), folder.path());
        press(window, Qt::Key_Escape);
    });
    (void)dialogs.runModal(panel);
    qputenv("HOME", home);
}

TEST_F(QtDialogsTest, APanelGivesAllTheFoldersChosenAndShowsItsMessage)
{
    const TemporaryFolder folder;
    const std::string one = folder.makeFolder("One");
    const std::string two = folder.makeFolder("Two");
    OpenPanel panel { false, true, true, "Use", "Choose some.", FileURL(folder.path()) };
    for (const bool isForSeveral : { true, false }) {
        panel.allowsMultipleSelection = isForSeveral;
        meanwhile<OpenPanelWindow>([&](OpenPanelWindow& window) {
            const auto labels = window.findChildren<QLabel*>();
            EXPECT_TRUE(std::ranges::any_of(
                labels, [](const QLabel* label) { return label->text() == "Choose some."; }));
            auto* list = window.findChild<QAbstractItemView*>("treeView");
            const auto isRead = [list] { return list->model()->rowCount(list->rootIndex()) == 2; };
            ASSERT_TRUE(happens(isRead));
            for (int row = 0; row < 2; ++row)
                QTest::mouseClick(list->viewport(), Qt::LeftButton, Qt::ControlModifier,
                    list->visualRect(list->model()->index(row, 0, list->rootIndex())).center());
            button(window, "Use").click();
        });
        const OpenPanelAnswer chosen = dialogs.runModal(panel);
        EXPECT_EQ(chosen.response, ModalResponse::ok);
        if (isForSeveral)
            EXPECT_THAT(chosen.urls, ElementsAre(FileURL(one), FileURL(two)));
        else
            EXPECT_THAT(chosen.urls, ElementsAre(FileURL(two)));
    }
}

TEST_F(QtDialogsTest, AFolderIsTheSameHoweverItIsTyped)
{
    const TemporaryFolder folder;
    const std::string song = folder.makeFolder("Song");
    const std::string hidden = folder.makeFolder(".Song");
    const OpenPanel panel { false, true, true, "Use", "Choose.", FileURL(folder.path()) };
    const std::pair<std::string, std::string> rows[] = {
        { song, song },
        { song + "/", song },
        { hidden + "/", hidden },
        { "/", "/" },
    };
    for (const auto& [typed, expected] : rows) {
        meanwhile<OpenPanelWindow>([&text = typed](OpenPanelWindow& window) {
            auto& name = *window.findChild<QLineEdit*>("fileNameEdit");
            name.selectAll();
            QTest::keyClicks(&name, QString::fromStdString(text));
            QTest::keyClick(&name, Qt::Key_Return);
        });
        const OpenPanelAnswer chosen = dialogs.runModal(panel);
        ASSERT_EQ(chosen.response, ModalResponse::ok) << typed;
        EXPECT_EQ(chosen.url->path(), expected);
    }
}

TEST_F(QtDialogsTest, NothingIsDeletedInAPanel)
{
    const TemporaryFolder folder;
    folder.makeFolder("Song");
    const OpenPanel panel { false, true, true, "Use", "Choose.", FileURL(folder.path()) };
    meanwhile<OpenPanelWindow>([&](OpenPanelWindow& window) {
        auto* list = window.findChild<QAbstractItemView*>("treeView");
        ASSERT_TRUE(happens([list] { return list->model()->rowCount(list->rootIndex()) == 1; }));
        list->setCurrentIndex(list->model()->index(0, 0, list->rootIndex()));
        // What asks whether to delete would block, so it is answered.
        dispatch.mainAsync([&window] {
            if (QWidget* asking = QApplication::activeModalWidget(); asking && asking != &window) {
                ADD_FAILURE() << "it asks whether to delete";
                asking->close();
            }
        });
        QTest::keyClick(list, Qt::Key_Delete);
        press(window, Qt::Key_Escape);
    });
    (void)dialogs.runModal(panel);
}

TEST_F(QtDialogsTest, APanelThatStillReadsItsFolderEndsWhenThatIsDone)
{
    const TemporaryFolder folder;
    auto panel = std::make_unique<OpenPanelWindow>(
        OpenPanel { false, true, true, "Use", "Choose.", FileURL(folder.path()) });
    const QPointer<OpenPanelWindow> left = panel.get();
    OpenPanelWindow::endWhenRead(std::move(panel));
    EXPECT_TRUE(left) << "its thread has not been heard of";
    EXPECT_TRUE(happens([&] { return !left; }));
}

TEST_F(QtDialogsTest, NoNameInAPanelIsTakenForMarkup)
{
    const TemporaryFolder folder;
    const std::string drive = folder.makeFolder("<i>x");
    const OpenPanel panel { false, true, true, "Use", "Choose.", FileURL(folder.path()) };
    meanwhile<OpenPanelWindow>([&](OpenPanelWindow& window) {
        window.setSidebarUrls({ QUrl::fromLocalFile(QString::fromStdString(drive)) });
        auto* places = window.findChild<QAbstractItemView*>("sidebar");
        const QPoint point = places->visualRect(places->model()->index(0, 0)).center();
        QHelpEvent pointing(QEvent::ToolTip, point, places->viewport()->mapToGlobal(point));
        QCoreApplication::sendEvent(places->viewport(), &pointing);
        EXPECT_THAT(QToolTip::text().toStdString(), testing::HasSubstr("&lt;i&gt;x"));
        press(window, Qt::Key_Escape);
    });
    (void)dialogs.runModal(panel);
}

} // namespace
} // namespace stemvault::dialogs
