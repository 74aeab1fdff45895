#include "LinuxDesktop/Application/AnswerGuard.h"
#include "LinuxDesktop/Dialogs/AlertWindow.h"
#include "LinuxDesktop/Dialogs/QtDialogs.h"
#include "LinuxDesktop/Dispatch/QtDispatch.h"
#include "LinuxDesktop/QtTest.h"
#include "Platform/Stages.h"
#include "Support/FakePlatform.h"

#include <QApplication>
#include <QComboBox>
#include <QLineEdit>
#include <QPushButton>

#include <algorithm>
#include <optional>

namespace stemvault {
namespace {

// Alerts only: a panel's answer does not depend on the panel's fields.

/// What the user does with an alert.
struct Use {
    std::string press; ///< The title of a button; if empty, the user closes the window.
    std::optional<int> select {}; ///< The index of an item of the pop-up button.
    std::optional<std::string> type {}; ///< Replaces the text field's text.
};

struct FakeDialogsStage {
    static constexpr const char* name = "Fake";

    void expect(const Use& use)
    {
        if (use.press.empty())
            dialogs.answerNumber(ModalResponse::stopped);
        else if (use.type)
            dialogs.answerText(use.press, *use.type);
        else
            dialogs.answer(use.press, use.select.value_or(0));
    }

    FakeDialogs dialogs;
};

struct QtDialogsStage {
    static constexpr const char* name = "Qt";

    void expect(const Use& use)
    {
        windows.activate();
        dispatch.mainAsync([use] {
            dialogs::AlertWindow* window = nullptr;
            ASSERT_TRUE(happens([&window] {
                window = dynamic_cast<dialogs::AlertWindow*>(QApplication::activeModalWidget());
                const auto* guard =
                    window ? window->findChild<application::AnswerGuard*>() : nullptr;
                return guard && guard->takesKeys() && guard->takesClicks();
            }));
            if (use.select)
                window->findChild<QComboBox*>()->setCurrentIndex(*use.select);
            if (use.type)
                window->findChild<QLineEdit*>()->setText(QString::fromStdString(*use.type));
            const auto buttons = window->findChildren<QPushButton*>();
            const auto button = std::ranges::find_if(buttons, [&use](const QPushButton* each) {
                return each->text().toStdString() == use.press;
            });
            if (button != buttons.end())
                (*button)->click();
            else
                window->close();
        });
    }

    dispatch::QtDispatch dispatch;
    application::ModalWindows windows { 20ms };
    application::ApplicationIcon icon;
    dialogs::QtDialogs dialogs { windows, icon };
};

template <typename Stage> struct DialogsTests : testing::Test {
};
using DialogsStages = testing::Types<FakeDialogsStage, QtDialogsStage>;
TYPED_TEST_SUITE(DialogsTests, DialogsStages, StageNames);

TYPED_TEST(DialogsTests, AnAlertAnswersWithItsButtonAndItsAccessoryAsItWasLeft)
{
    const PopUpButton folders { { 0, 0, 280, 26 }, { "Client A", "Client B" } };
    const TextField field { { 0, 0, 280, 24 }, "Song", true };
    const struct {
        const char* what;
        std::optional<AccessoryView> accessory;
        std::vector<std::string> buttons;
        Use use;
        int response, index;
        std::string text;
    } rows[] = {
        { "the first button", {}, { "Add", "Skip" }, { "Add" }, 1000, -1, "" },
        { "the second button", {}, { "Add", "Skip" }, { "Skip" }, 1001, -1, "" },
        { "no button of its own", {}, {}, { "OK" }, 1000, -1, "" },
        { "closed", {}, { "Add", "Skip" }, { "" }, ModalResponse::stopped, -1, "" },
        { "a pop-up button as it was", folders, { "Add" }, { "Add" }, 1000, 0, "" },
        { "another item of it", folders, { "Add" }, { "Add", 1 }, 1000, 1, "" },
        { "closed with a pop-up button", folders, { "Add", "Skip" }, { "" }, ModalResponse::stopped,
            0, "" },
        { "a text field as it was", field, { "Create" }, { "Create" }, 1000, -1, "Song" },
        { "a text that was typed", field, { "Create" }, { "Create", {}, "Mix" }, 1000, -1, "Mix" },
        { "a text that was emptied", field, { "Create" }, { "Create", {}, "" }, 1000, -1, "" },
        { "closed with a text field", field, { "Create", "Cancel" }, { "" }, ModalResponse::stopped,
            -1, "Song" },
    };
    for (const auto& row : rows) {
        TypeParam stage;
        stage.expect(row.use);
        Alert alert;
        alert.messageText = row.what;
        alert.accessoryView = row.accessory;
        alert.buttons = row.buttons;
        const AlertAnswer answer = stage.dialogs.runModal(alert);
        EXPECT_EQ(answer.response, row.response) << row.what;
        EXPECT_EQ(answer.indexOfSelectedItem, row.index) << row.what;
        EXPECT_EQ(answer.text, row.text) << row.what;
    }
}

} // namespace
} // namespace stemvault
