#pragma once

#include "Foundation/FileURL.h"
#include "Foundation/WeakGuard.h"
#include "Platform/StatusBar.h"

#include <memory>
#include <optional>
#include <string>

namespace stemvault {

class Window;
struct Notification;

/// The item in the status bar with its menu, and the preferences window that it opens. Main thread
/// only.
class MenuBarManager : public MenuDelegate {
public:
    MenuBarManager();
    ~MenuBarManager() override;
    MenuBarManager(const MenuBarManager&) = delete;
    MenuBarManager& operator=(const MenuBarManager&) = delete;

    void menuWillOpen(Menu& menu) override;

    /// Shows the preferences; always the same window.
    void openPreferences();

    /// Must be called on each change of the session, whose name the menu shows.
    void sessionDidChange();

private:
    void build();
    void openPreferencesIfTrayMissing();
    void handleBounceAdded(const Notification& notification);
    static void checkForUpdates();
    [[nodiscard]] static AttributedString sessionTitle(const std::optional<FileURL>& folder);
    [[nodiscard]] static std::optional<std::string> lastAddedText(const Notification& notification);

    std::unique_ptr<StatusItem> statusItem;
    std::unique_ptr<Window> preferencesWindow;
    std::optional<std::string> lastCopied; ///< The text of the row about the last file added.

    WeakGuard alive;
};

} // namespace stemvault
