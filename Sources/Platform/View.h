#pragma once

#include "Platform/Action.h"
#include "Platform/AttributedString.h"

#include <functional>
#include <optional>
#include <string>
#include <type_traits>
#include <utility>
#include <variant>
#include <vector>

namespace stemvault {

// The content of a window, as values. The program's `body()` builds a new tree of views for each
// drawing; the backend compares it with the previous tree and changes only what differs. Building
// and comparing trees touches no window, so views can be built anywhere and tests can read them as
// data. Texts are UTF-8 and shown as they stand, never as markup. Lengths are in points. Callbacks
// are called on the main thread, from the event loop.

struct View;

/// Sizes relative to the desktop's own font.
enum class TextStyle { Headline, Body, Callout, Caption };
enum class FontWeight { Regular, Medium, Semibold };

struct Font {
    TextStyle style = TextStyle::Body;
    FontWeight weight = FontWeight::Regular;

    [[nodiscard]] bool operator==(const Font&) const = default;
};

/// A text. It is wrapped into as many lines as it needs, or kept on one line and shortened in the
/// middle, so that the end of a path stays readable.
struct Text {
    std::string string;
    Font font {};
    Color color = Color::Label;
    enum class Lines { AsNeeded, OneTruncatedInTheMiddle } lines = Lines::AsNeeded;

    [[nodiscard]] bool operator==(const Text&) const = default;
};

/// A picture as high as a line of text in the font, drawn in a text colour.
struct Symbol {
    std::string systemName; ///< For Bundle::imageWithSystemSymbolName; unknown: nothing is drawn.
    Color color = Color::Label;
    Font font {};

    [[nodiscard]] bool operator==(const Symbol&) const = default;
};

/// A symbol followed by a text, such as the title of a section.
struct Label {
    std::string title;
    std::string systemImage; ///< The name of the symbol.
    Font font {};
    Color color = Color::Label;
    bool isUppercase = false; ///< Shown in capital letters.

    [[nodiscard]] bool operator==(const Label&) const = default;
};

enum class ControlSize { Regular, Small };

/// A button. Space and Return press it while it has the keyboard focus.
struct Button {
    enum class Style { Bordered, Plain };

    std::variant<Text, Symbol> label;
    Action action; ///< May change the view and thereby remove the button.
    Style style = Style::Bordered;
    ControlSize size = ControlSize::Regular;
    std::string help; ///< The tooltip. Screen readers also read it for a button with a symbol.

    [[nodiscard]] bool operator==(const Button&) const = default;
};

/// A switch with a title.
struct Toggle {
    std::string title;
    bool isOn = false;
    /// Called when the user, not the program, changes the switch. The view must then be drawn
    /// again: the switch shows the new `isOn`, so a change that was refused is undone.
    std::function<void(bool)> onChange;
    ControlSize size = ControlSize::Regular;

    [[nodiscard]] bool operator==(const Toggle& other) const
    {
        return title == other.title && isOn == other.isOn && size == other.size;
    }
};

/// A thin line across the view.
struct Divider {
    [[nodiscard]] bool operator==(const Divider&) const = default;
};

/// Empty space that fills the room left by the other views in its stack.
struct Spacer {
    [[nodiscard]] bool operator==(const Spacer&) const = default;
};

/// Views in a row or a column. Tab moves through their controls in the order of `children`.
struct Stack {
    enum class Axis { Horizontal, Vertical };
    enum class Alignment { Leading, Center, Top };

    Axis axis = Axis::Vertical;
    Alignment alignment = Alignment::Leading;
    std::optional<double> spacing; ///< Between two children; absent: the desktop's default.
    std::vector<View> children;
    bool isList = false; ///< It scrolls separately when the screen has no room for all its rows.

    [[nodiscard]] bool operator==(const Stack&) const;
};

/// The space around a view; absent: the desktop's default.
struct Padding {
    std::optional<double> horizontal = 0;
    std::optional<double> vertical = 0;

    [[nodiscard]] static Padding standard() { return { std::nullopt, std::nullopt }; }

    [[nodiscard]] bool operator==(const Padding&) const = default;
};

/// One node of the tree. Two are equal when they look the same; see Action for their callbacks.
struct View {
    using Content = std::variant<Stack, Text, Symbol, Label, Button, Toggle, Divider, Spacer>;

    Content content;
    Padding padding;
    std::optional<double> width; ///< Absent: as wide as the content and the layout require.
    /// Identifies a row of a list from one drawing to the next, so that it keeps the keyboard focus
    /// when rows before it come and go. Unique among its siblings, or empty.
    std::string id;

    template <typename Node>
    requires std::is_constructible_v<Content, Node> View(Node node) : content(std::move(node)) { }

    [[nodiscard]] bool operator==(const View&) const = default;
};

inline bool Stack::operator==(const Stack& other) const
{
    return axis == other.axis && alignment == other.alignment && spacing == other.spacing
        && children == other.children && isList == other.isList;
}

} // namespace stemvault
