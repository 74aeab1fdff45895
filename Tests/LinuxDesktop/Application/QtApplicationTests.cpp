#include "LinuxDesktop/Application/DBusServices.h"
#include "LinuxDesktop/Application/QtApplication.h"
#include "LinuxDesktop/Dialogs/QtDialogs.h"
#include "LinuxDesktop/Dispatch/QtDispatch.h"
#include "LinuxDesktop/QtTest.h"

#include <QCoreApplication>

#include <csignal>

namespace stemvault::application {
namespace {

struct Delegate : ApplicationDelegate {
    std::vector<std::string> told;
    Work launched;

    void applicationDidFinishLaunching() override
    {
        told.emplace_back("launched");
        launched();
    }
    void applicationShouldHandleReopen() override { told.emplace_back("reopened"); }
    void applicationWillTerminate() override { told.emplace_back("terminating"); }
};

TEST(QtApplicationTest, HoweverTheProgramEndsItsAlertsStopAndTheDelegateIsToldOnce)
{
    const std::pair<const char*, void (*)(Application&)> rows[] = {
        { "asked to by the program", [](Application& application) { application.terminate(); } },
        { "asked to twice",
            [](Application& application) {
                application.terminate();
                application.terminate();
            } },
        { "SIGTERM", [](Application&) { std::raise(SIGTERM); } },
        { "SIGINT", [](Application&) { std::raise(SIGINT); } },
        { "the end of the session", [](Application&) { QCoreApplication::quit(); } },
    };
    std::signal(SIGHUP, SIG_IGN); // As nohup does.
    for (const auto& [what, end] : rows) {
        dispatch::QtDispatch dispatch;
        ModalWindows windows;
        Delegate delegate;
        DBusServices services(QDBusConnection("none"));
        QtApplication application(windows, services, [&] { delegate.told.emplace_back("saved"); });
        dialogs::QtDialogs dialogs(windows, application.applicationIcon());
        const auto ask = [&](const std::string& name) {
            Alert alert;
            alert.messageText = name;
            const bool stopped = dialogs.runModal(alert).response == ModalResponse::stopped;
            delegate.told.push_back(name + (stopped ? " stopped" : " answered"));
        };
        delegate.launched = [&, finish = end] {
            dispatch.mainAsync([&] { ask("inner"); });
            dispatch.mainAsync([&, finish] { finish(application); });
            application.reopen();
            ask("outer");
            ask("late");
        };
        application.setDelegate(&delegate);
        application.reopen(); // Not reported: too early here, too late below.
        application.run();
        application.reopen();
        EXPECT_THAT(delegate.told,
            ElementsAre("launched", "reopened", "terminating", "saved", "inner stopped",
                "outer stopped", "late stopped"))
            << what;
    }
    EXPECT_EQ(std::signal(SIGHUP, SIG_DFL), SIG_IGN);
}

} // namespace
} // namespace stemvault::application
