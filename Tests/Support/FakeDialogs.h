#pragma once

#include "Platform/Dialogs.h"
#include "Support/FakeApplication.h"
#include "Support/FakeDispatch.h"

#include <deque>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace stemvault {

/// Answers each question from a script, in order; a question that no step expects is a failure, and
/// so is a step that no question used, or a question from a background thread.
struct FakeDialogs : Dialogs {
    ~FakeDialogs() override;
    [[nodiscard]] AlertAnswer runModal(const Alert& alert) override;
    [[nodiscard]] OpenPanelAnswer runModal(const OpenPanel& panel) override;

    // What a test may do.

    /// Presses the button of this title, with the pop-up button's item at `index` selected, or with
    /// the text field as it was. What `meanwhile` does happens while the alert is open.
    void answer(
        const std::string& title, int index = 0, std::function<void()> meanwhile = [] {});
    /// Presses the button of this title, with the accessory's text field left at `text`.
    void answerText(const std::string& title, const std::string& text);
    /// Answers an alert with this number, whatever its buttons.
    void answerNumber(int response);
    /// Chooses a folder in the panel, or cancels it. What `meanwhile` does happens while it is
    /// open.
    void choose(
        const std::optional<std::string>& path, std::function<void()> meanwhile = [] {});
    /// Chooses several.
    void chooseAll(const std::vector<std::string>& paths);

    /// The informative text of each alert.
    [[nodiscard]] std::vector<std::string> texts() const;

    std::vector<Alert> alerts; ///< As they were asked.
    std::vector<OpenPanel> panels;
    const FakeApplication* application = nullptr;
    const FakeDispatch* dispatch = nullptr;
    std::vector<int> activationsBefore; ///< How often the program had come to the front by then.

private:
    std::deque<std::function<AlertAnswer(const Alert&)>> answers;
    std::deque<std::function<OpenPanelAnswer(const OpenPanel&)>> choices;
};

} // namespace stemvault
