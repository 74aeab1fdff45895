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

struct View;

enum class TextStyle { Headline, Body, Callout, Caption };
enum class FontWeight { Regular, Medium, Semibold };

struct Font {
    TextStyle style = TextStyle::Body;
    FontWeight weight = FontWeight::Regular;

    [[nodiscard]] bool operator==(const Font&) const = default;
};

/// A text that takes as many lines as it needs, or one that is shortened in the middle.
struct Text {
    std::string string;
    Font font {};
    Color color = Color::Label;
    enum class Lines { AsNeeded, OneTruncatedInTheMiddle } lines = Lines::AsNeeded;

    [[nodiscard]] bool operator==(const Text&) const = default;
};

/// A picture from the system's symbols; in the font's size.
struct Symbol {
    std::string systemName;
    Color color = Color::Label;
    Font font {};

    [[nodiscard]] bool operator==(const Symbol&) const = default;
};

/// A symbol and a text that belong together, such as a title.
struct Label {
    std::string title;
    std::string systemImage;
    Font font {};
    Color color = Color::Label;
    bool isUppercase = false; ///< Shown in capital letters.

    [[nodiscard]] bool operator==(const Label&) const = default;
};

enum class ControlSize { Regular, Small };

struct Button {
    enum class Style { Bordered, Plain };

    std::variant<Text, Symbol> label;
    Action action;
    Style style = Style::Bordered;
    ControlSize size = ControlSize::Regular;
    std::string help; ///< Says what it does where the label alone does not.

    [[nodiscard]] bool operator==(const Button&) const = default;
};

/// A switch with its label. The view is drawn again to show what became of a change.
struct Toggle {
    std::string title;
    bool isOn = false;
    std::function<void(bool)> onChange;
    ControlSize size = ControlSize::Regular;

    [[nodiscard]] bool operator==(const Toggle& other) const
    {
        return title == other.title && isOn == other.isOn && size == other.size;
    }
};

struct Divider {
    [[nodiscard]] bool operator==(const Divider&) const = default;
};

/// Takes whatever room is left.
struct Spacer {
    [[nodiscard]] bool operator==(const Spacer&) const = default;
};

/// Views beside or above one another.
struct Stack {
    enum class Axis { Horizontal, Vertical };
    enum class Alignment { Leading, Center, Top };

    Axis axis = Axis::Vertical;
    Alignment alignment = Alignment::Leading;
    std::optional<double> spacing; ///< In points; absent: the desktop's own.
    std::vector<View> children;
    bool isList = false; ///< A list of rows, which scrolls when the screen has no room for it.

    [[nodiscard]] bool operator==(const Stack&) const;
};

/// The room around a view, in points; absent: the desktop's own.
struct Padding {
    std::optional<double> horizontal = 0;
    std::optional<double> vertical = 0;

    [[nodiscard]] static Padding standard() { return { std::nullopt, std::nullopt }; }

    [[nodiscard]] bool operator==(const Padding&) const = default;
};

/// One node of what a window shows. Making one touches nothing, and two of them are equal when they
/// look the same.
struct View {
    using Content = std::variant<Stack, Text, Symbol, Label, Button, Toggle, Divider, Spacer>;

    Content content;
    Padding padding;
    std::optional<double> width; ///< In points; absent: as the content and the room around ask.
    std::string id; ///< Tells a row of a list from the others, from one drawing to the next.

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
