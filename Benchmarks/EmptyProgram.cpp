// stemvault-empty-program FOLDER: a minimal Qt Widgets program, as a baseline. Starts its event
// loop, then watches FOLDER, which shows from outside that the loop runs, and does nothing else.

#include <QApplication>
#include <QTimer>

#include <sys/inotify.h>

int main(int argc, char* argv[])
{
    const QApplication application(argc, argv);
    QTimer::singleShot(0, &application, [&application] {
        inotify_add_watch(inotify_init1(IN_CLOEXEC),
            application.arguments().at(1).toLocal8Bit().constData(), IN_CREATE);
    });
    return QApplication::exec();
}
