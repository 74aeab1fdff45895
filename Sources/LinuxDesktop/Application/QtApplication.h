#pragma once

#include "LinuxDesktop/Application/ApplicationIcon.h"
#include "LinuxDesktop/Application/ModalWindows.h"
#include "Platform/Application.h"

#include <QObject>

#include <functional>

class QSessionManager;

namespace stemvault {

class DBusServices;

/// Made once the toolkit's application object stands. Besides `terminate`, these end the program in
/// good order: SIGTERM, SIGINT and SIGHUP, the end of the desktop session, and the loss of the
/// display.
class QtApplication final : public QObject, public Application {
public:
    /// `lastWork` is run once, after the delegate was told of the end.
    QtApplication(
        ModalWindows& modalWindows, DBusServices& busServices, std::function<void()> finalWork);
    ~QtApplication() override;

    void setDelegate(ApplicationDelegate* chosen) override;

    /// No policy lets the program end with its last window. An accessory's alerts are in the task
    /// list all the same, or one that another window hides would be lost.
    void setActivationPolicy(ActivationPolicy policy) override;

    void setServicesProvider(ServicesProvider* provider) override;
    void setApplicationIconImage(const Image& image) override;
    void activateIgnoringOtherApps() override;
    void run() override;
    void terminate() override;

    /// The user has started the program once more.
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
    std::function<void()> lastWork;
    ApplicationDelegate* delegate = nullptr;
    ApplicationIcon iconOfWindows;
    bool isLaunched = false;
    bool isTerminating = false;
    bool isEndTold = false;
};

} // namespace stemvault
