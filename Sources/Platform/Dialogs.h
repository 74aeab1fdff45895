#pragma once

#include "Foundation/FileURL.h"
#include "Platform/Image.h"

#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace stemvault {

/// What a modal session answers. Alerts answer `alertFirstButton` for the first button added, one
/// more for the second, and so on.
namespace ModalResponse {
inline constexpr int stopped = -1000; ///< Closed, or the program ended, without a button.
inline constexpr int cancel = 0;
inline constexpr int ok = 1;
inline constexpr int alertFirstButton = 1000;
} // namespace ModalResponse

enum class AlertStyle { Warning, Informational, Critical };

/// In points.
struct Frame {
    double x = 0;
    double y = 0;
    double width = 0;
    double height = 0;

    [[nodiscard]] bool operator==(const Frame&) const = default;
};

/// A button that shows its selected item and offers the others in a menu. The first is selected.
struct PopUpButton {
    Frame frame;
    std::vector<std::string> items;

    [[nodiscard]] bool operator==(const PopUpButton&) const = default;
};

/// A line of text that the user may change.
struct TextField {
    Frame frame;
    std::string text; ///< What it holds when the alert opens.
    bool isInitialFirstResponder = false; ///< It has the keyboard then, all its text selected.

    [[nodiscard]] bool operator==(const TextField&) const = default;
};

using AccessoryView = std::variant<PopUpButton, TextField>;

/// A modal question, whole. Texts are shown as they stand, never as markup.
struct Alert {
    std::string messageText;
    std::string informativeText;
    AlertStyle style = AlertStyle::Warning;
    std::optional<Image> icon; ///< Absent: the application's own.
    std::optional<AccessoryView> accessoryView; ///< Between the texts and the buttons.
    std::vector<std::string> buttons; ///< The first is the default. Empty: a single "OK".

    [[nodiscard]] bool operator==(const Alert&) const = default;
};

struct AlertAnswer {
    int response = ModalResponse::stopped;
    int indexOfSelectedItem = -1; ///< Of a pop-up button; -1 when there is none.
    std::string text; ///< Of a text field, as it was left.
};

/// A panel that picks a file or folder that exists, or several.
struct OpenPanel {
    bool canChooseFiles = true;
    bool canChooseDirectories = false;
    bool canCreateDirectories = false;
    std::string prompt; ///< The title of its confirm button.
    std::string message; ///< A line above the list.
    std::optional<FileURL> directoryURL; ///< Where it starts, where that folder exists.
    bool allowsMultipleSelection = false;

    [[nodiscard]] bool operator==(const OpenPanel&) const = default;
};

struct OpenPanelAnswer {
    int response = ModalResponse::cancel;
    std::optional<FileURL> url; ///< Absolute, without a trailing slash; the first of `urls`.
    std::vector<FileURL> urls {}; ///< All that was chosen, in the order of the panel.
};

/// Modal questions. Each call runs a nested event loop: main-queue work goes on meanwhile, and may
/// itself open another one, which then is answered first. Main thread only.
class Dialogs {
public:
    virtual ~Dialogs() = default;
    [[nodiscard]] virtual AlertAnswer runModal(const Alert& alert) = 0;
    [[nodiscard]] virtual OpenPanelAnswer runModal(const OpenPanel& panel) = 0;
};

} // namespace stemvault
