#pragma once

#include "Platform/StatusBar.h"

#include <memory>
#include <optional>
#include <string>

namespace stemvault {

/// Has room for one item.
struct FakeStatusBar : StatusBar {
    [[nodiscard]] std::unique_ptr<StatusItem> statusItem(double length) override;

    // What a test may do.

    /// The menu as the user finds it on opening it.
    const Menu& open();
    /// Opens the menu and chooses the row of this title.
    void choose(const std::string& title);

    bool isThere = true;
    double length = 0;
    std::optional<Image> image;
    Menu menu;
    int updates = 0; ///< How often the menu was said to be out of date.
    MenuDelegate* delegate = nullptr;
};

} // namespace stemvault
