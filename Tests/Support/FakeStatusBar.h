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

    /// Returns the menu as the user sees it on opening it.
    const Menu& open();
    /// Opens the menu and chooses the row with this title.
    void choose(const std::string& title);

    bool isThere = true;
    double length = 0;
    std::optional<Image> image;
    Menu menu;
    int updates = 0; ///< How often an update of the menu was requested.
    MenuDelegate* delegate = nullptr;
};

} // namespace stemvault
