#pragma once

#include "Platform/Application.h"
#include "StemvaultConnect/ServiceProvider.h"

#include <memory>

namespace stemvault {

class MenuBarManager;

/// Creates and connects the long-lived objects, in a fixed order, and stops the session tracker and
/// the bounce watcher at the end.
class AppDelegate : public ApplicationDelegate {
public:
    AppDelegate();
    ~AppDelegate() override;

    void applicationDidFinishLaunching() override;
    void applicationShouldHandleReopen() override;
    void applicationWillTerminate() override;

private:
    std::unique_ptr<MenuBarManager> menuBarManager; ///< Absent until launching has finished.
    ServiceProvider serviceProvider;
    bool isTerminating = false;
};

} // namespace stemvault
