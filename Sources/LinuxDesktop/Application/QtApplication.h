#pragma once

#include "LinuxDesktop/Application/ApplicationIcon.h"
#include "LinuxDesktop/Application/ModalWindows.h"
#include "Platform/Application.h"

#include <QObject>

#include <functional>

class QSessionManager;

namespace stemvault::application {

class DBusServices;

/// Construct it after the toolkit's application object. Besides `terminate`, these end the program
/// in an orderly way: SIGTERM, SIGINT and SIGHUP, the end of the desktop session, and the loss of
/// the display.
class QtApplication final : public QObject, public Application {
public:
    /// `workAtEnd` runs after `applicationWillTerminate`, and whenever the session is about to end.
    QtApplication(
        ModalWindows& modalWindows, DBusServices& busServices, std::function<void()> workAtEnd);
    ~QtApplication() override;

    void setDelegate(ApplicationDelegate* chosen) override;

    /// Has no effect. The program never ends with its last window, and even an accessory's alerts
    /// are in the task list, because one that is hidden by another window would be lost otherwise.
    void setActivationPolicy(ActivationPolicy policy) override;

    void setServicesProvider(ServicesProvider* provider) override;
    void setApplicationIconImage(const Image& image) override;
    void activateIgnoringOtherApps() override;
    void run() override;
    void terminate() override;

    /// Call it when the user has started the program again.
    void reopen();

    [[nodiscard]] ApplicationIcon& applicationIcon() { return iconOfWindows; }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void launch();
    void notifyWillTerminate();
    void endOfSession(QSessionManager& manager);

    ModalWindows& windows;
    DBusServices& services;
    std::function<void()> finalWork;
    ApplicationDelegate* delegate = nullptr;
    ApplicationIcon iconOfWindows;
    bool isLaunched = false;
    bool isTerminating = false;
    bool hasNotifiedTermination = false;
};

} // namespace stemvault::application
