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

/// Answers questions from a script, in order. An unexpected question is a test failure, and so is
/// an answer that was not used, or a question from a background thread.
struct FakeDialogs : Dialogs {
    ~FakeDialogs() override;
    [[nodiscard]] AlertAnswer runModal(const Alert& alert) override;
    [[nodiscard]] OpenPanelAnswer runModal(const OpenPanel& panel) override;

    // What a test may do.

    /// Presses the button with this title, with the pop-up button's item at `index` selected, or
    /// with the text field unchanged. Runs `meanwhile` while the alert is open.
    void answer(
        const std::string& title, int index = 0, std::function<void()> meanwhile = [] {});
    /// Presses the button with this title, with `text` in the accessory's text field.
    void answerText(const std::string& title, const std::string& text);
    /// Answers an alert with this response code, whatever its buttons are.
    void answerNumber(int response);
    /// Chooses a folder in the panel, or cancels the panel. Runs `meanwhile` while it is open.
    void choose(
        const std::optional<std::string>& path, std::function<void()> meanwhile = [] {});
    /// Chooses several folders.
    void chooseAll(const std::vector<std::string>& paths);

    /// The informative text of each alert.
    [[nodiscard]] std::vector<std::string> texts() const;

    std::vector<Alert> alerts; ///< In the order shown.
    std::vector<OpenPanel> panels;
    const FakeApplication* application = nullptr;
    const FakeDispatch* dispatch = nullptr;
    std::vector<int> activationsBefore; ///< `activations` at the time of each alert.

private:
    std::deque<std::function<AlertAnswer(const Alert&)>> answers;
    std::deque<std::function<OpenPanelAnswer(const OpenPanel&)>> choices;
};

} // namespace stemvault
