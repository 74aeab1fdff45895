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
    std::string title;
    std::optional<AttributedString> attributedTitle; ///< Shown in the title's place.
    std::string keyEquivalent; ///< A character, used with the desktop's modifier for commands.
    Action action;
    bool isEnabled = true;
    bool isHidden = false;
    bool isSeparator = false;

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

    /// Called on the main thread each time the menu is about to open, to bring `menu` up to date.
    /// May be called more often: desktops show a menu from a copy that they fetch when they like.
    virtual void menuWillOpen(Menu& menu) = 0;
};

/// An item in the status bar, there for as long as this lives and whenever the desktop has such a
/// bar. Main thread only.
class StatusItem {
public:
    StatusItem() = default;
    StatusItem(const StatusItem&) = delete;
    StatusItem& operator=(const StatusItem&) = delete;
    virtual ~StatusItem() = default;

    /// Absent: the item has no image.
    virtual void setImage(const std::optional<Image>& image) = 0;

    /// The menu that a click on the item opens. The rows never change their number or order.
    /// `delegate` is not owned and must outlive the item.
    virtual void setMenu(Menu menu, MenuDelegate* delegate) = 0;

    /// Says that the delegate would now show something else, for desktops that never say when they
    /// open a menu. A menu that is open may be left as it is.
    virtual void setMenuNeedsUpdate() = 0;

    /// Whether the desktop has a status bar that shows the item now. Right after the start nothing
    /// is known of it yet, and the answer is no.
    [[nodiscard]] virtual bool isVisible() const = 0;
};

class StatusBar {
public:
    virtual ~StatusBar() = default;

    static constexpr double squareLength = -2;

    /// A new item of this length in points, or `squareLength`. Main thread only.
    [[nodiscard]] virtual std::unique_ptr<StatusItem> statusItem(double length) = 0;
};

} // namespace stemvault
