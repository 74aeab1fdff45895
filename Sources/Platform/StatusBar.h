#pragma once

#include "Platform/Action.h"
#include "Platform/AttributedString.h"
#include "Platform/Image.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace stemvault {

/// One row of a menu.
struct MenuItem {
    std::string title; ///< UTF-8, shown as it stands: no character in it marks a shortcut.
    std::optional<AttributedString> attributedTitle; ///< Shown instead of the title.
    std::string keyEquivalent; ///< One character, pressed with the desktop's modifier for commands.
    Action action; ///< Runs from the event loop after the menu has closed.
    bool isEnabled = true; ///< A disabled row is grey, and its action does not run.
    bool isHidden = false; ///< A hidden row takes no room and keeps its index.
    bool isSeparator = false; ///< A line; its other fields are ignored.

    [[nodiscard]] static MenuItem separatorItem()
    {
        MenuItem item;
        item.isSeparator = true;
        return item;
    }

    [[nodiscard]] bool operator==(const MenuItem&) const = default;
};

struct Menu {
    std::vector<MenuItem> items;

    [[nodiscard]] bool operator==(const Menu&) const = default;
};

class MenuDelegate {
public:
    virtual ~MenuDelegate() = default;

    /// Called on the main thread before the menu opens, to bring the rows of `menu` up to date.
    /// Also called at other times, because many panels show a copy that they may fetch at any time.
    /// It must be quick and must not add, remove or reorder rows. `menu` is valid only during the
    /// call.
    virtual void menuWillOpen(Menu& menu) = 0;
};

/// An item in the status bar. It is shown from `setMenu` until it is destroyed, whenever the
/// desktop has a status bar, even one that starts later or restarts after a crash. Main thread
/// only.
class StatusItem {
public:
    StatusItem() = default;
    StatusItem(const StatusItem&) = delete;
    StatusItem& operator=(const StatusItem&) = delete;
    virtual ~StatusItem() = default;

    /// Replaces the image; absent removes it. A template image is drawn in the bar's text colour
    /// where the bar can do that.
    virtual void setImage(const std::optional<Image>& image) = 0;

    /// Sets the menu that a click on the item opens. Later calls must keep the number and the order
    /// of the rows, because panels address a row by its index. `delegate` is not owned and must
    /// outlive the item.
    virtual void setMenu(Menu menu, MenuDelegate* delegate) = 0;

    /// Must be called when menuWillOpen would change a row: some desktops do not announce that they
    /// open a menu, so they are sent the new rows at once. May call menuWillOpen before it returns.
    /// A menu that is open keeps its rows.
    virtual void setMenuNeedsUpdate() = 0;

    /// Whether a status bar currently shows the item. False for the first moments after `setMenu`,
    /// until the desktop has answered, and on a desktop without a status bar.
    [[nodiscard]] virtual bool isVisible() const = 0;
};

/// The area of the desktop's panel in which programs show an icon. Main thread only.
class StatusBar {
public:
    virtual ~StatusBar() = default;

    static constexpr double squareLength = -2; ///< As wide as the bar is high.

    /// Creates an item, not yet shown, owned by the caller; never null. `length` is its width in
    /// points or `squareLength`; panels that choose the width themselves ignore it.
    [[nodiscard]] virtual std::unique_ptr<StatusItem> statusItem(double length) = 0;
};

} // namespace stemvault
