#pragma once

#include "Platform/View.h"

#include <functional>
#include <string>
#include <variant>
#include <vector>

namespace stemvault {

/// Every view of the tree in the order in which they are read.
inline void walk(const View& view, const std::function<void(const View&)>& visit)
{
    visit(view);
    if (const auto* stack = std::get_if<Stack>(&view.content))
        for (const View& child : stack->children)
            walk(child, visit);
}

/// What of one kind there is in the tree.
template <typename Node> std::vector<Node> all(const View& view)
{
    std::vector<Node> found;
    walk(view, [&found](const View& each) {
        if (const auto* node = std::get_if<Node>(&each.content))
            found.push_back(*node);
    });
    return found;
}

/// The texts of the tree, with the symbols in angle brackets and the buttons in square ones.
inline std::vector<std::string> readAloud(const View& view)
{
    std::vector<std::string> lines;
    walk(view, [&lines](const View& each) {
        if (const auto* text = std::get_if<Text>(&each.content))
            lines.push_back(text->string);
        else if (const auto* symbol = std::get_if<Symbol>(&each.content))
            lines.push_back("<" + symbol->systemName + ">");
        else if (const auto* label = std::get_if<Label>(&each.content))
            lines.push_back("<" + label->systemImage + "> " + label->title);
        else if (const auto* button = std::get_if<Button>(&each.content))
            lines.push_back("["
                + readAloud(std::visit([](auto node) { return View(node); }, button->label)).front()
                + "]");
    });
    return lines;
}

} // namespace stemvault
