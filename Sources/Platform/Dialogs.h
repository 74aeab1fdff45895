#pragma once

#include "Foundation/FileURL.h"
#include "Platform/Image.h"

#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace stemvault {

/// How a modal session ended. If the program ends, the session counts as closed.
namespace ModalResponse {
inline constexpr int stopped = -1000; ///< An alert was closed without a button.
inline constexpr int cancel = 0; ///< A panel was closed without a choice.
inline constexpr int ok = 1; ///< A panel was confirmed.
inline constexpr int alertFirstButton = 1000; ///< The second button is 1001, and so on.
} // namespace ModalResponse

enum class AlertStyle { Warning, Informational, Critical };

/// The position and the minimum size of an accessory view, in points. The backend may ignore the
/// position and make the view wider.
struct Frame {
    double x = 0;
    double y = 0;
    double width = 0;
    double height = 0;

    [[nodiscard]] bool operator==(const Frame&) const = default;
};

/// A button that shows its selected item and offers the others in a menu.
struct PopUpButton {
    Frame frame;
    std::vector<std::string> items; ///< The first is selected when the alert opens.

    [[nodiscard]] bool operator==(const PopUpButton&) const = default;
};

/// A line of text that the user may change.
struct TextField {
    Frame frame;
    std::string text; ///< Its content when the alert opens.
    bool isInitialFirstResponder = false; ///< Opens with the focus and with all its text selected.

    [[nodiscard]] bool operator==(const TextField&) const = default;
};

using AccessoryView = std::variant<PopUpButton, TextField>;

/// A modal question. Texts are UTF-8 and shown as they stand, never as markup; control characters
/// in them are made visible.
struct Alert {
    std::string messageText;
    std::string informativeText;
    AlertStyle style = AlertStyle::Warning;
    std::optional<Image> icon; ///< Absent: the application's icon.
    std::optional<AccessoryView> accessoryView; ///< Between the texts and the buttons.
    /// The first is the default, which Return presses. Escape presses one titled "Cancel". With a
    /// single button, Escape and closing the alert press it. Empty: a single "OK".
    std::vector<std::string> buttons;

    [[nodiscard]] bool operator==(const Alert&) const = default;
};

struct AlertAnswer {
    int response = ModalResponse::stopped; ///< A button, or `stopped`.
    int indexOfSelectedItem = -1; ///< Of the pop-up button; -1 when there is none or it is empty.
    std::string text; ///< Of the text field; exactly the initial bytes if the user changed nothing.
};

/// A panel in which the user picks existing files or folders.
struct OpenPanel {
    bool canChooseFiles = true; ///< False: only folders are listed.
    bool canChooseDirectories = false; ///< Only used if `canChooseFiles` is false.
    bool canCreateDirectories = false; ///< Whether the panel offers to create a new folder.
    std::string prompt; ///< The title of its confirm button.
    std::string message; ///< A line above the list.
    /// The folder that is shown first, or its nearest existing ancestor. Absent: the home folder.
    std::optional<FileURL> directoryURL;
    bool allowsMultipleSelection = false; ///< Whether `urls` may have more than one element.

    [[nodiscard]] bool operator==(const OpenPanel&) const = default;
};

struct OpenPanelAnswer {
    int response = ModalResponse::cancel; ///< After `cancel` the other fields mean nothing.
    std::optional<FileURL> url; ///< The first of `urls`.
    std::vector<FileURL> urls {}; ///< Absolute, without a trailing slash, in the panel's order.
};

/// Modal questions. Main thread only.
///
/// Each call shows a window, runs a nested event loop and returns when the user has answered, which
/// may take hours. Main-queue work runs meanwhile. It may open another modal window, which must be
/// answered first, and it may change or destroy what the caller refers to: keep values, not
/// references, across a call. The window takes the focus only if the program is in front.
/// `Application::terminate` ends every open call; a later one returns at once without a window.
///
/// Each overload has its own type of answer, so that no answer has fields that only the other
/// question uses.
class Dialogs {
public:
    virtual ~Dialogs() = default;

    /// Shows the alert. If the icon's file is gone, the desktop's icon for this style is shown.
    [[nodiscard]] virtual AlertAnswer runModal(const Alert& alert) = 0;

    /// Shows the panel. After `ok` there is at least one item; each existed when it was chosen.
    [[nodiscard]] virtual OpenPanelAnswer runModal(const OpenPanel& panel) = 0;
};

} // namespace stemvault
