// A minimal tray program with Qt, as a baseline for measurements.

#include <QAction>
#include <QApplication>
#include <QMenu>
#include <QSystemTrayIcon>

int main(int argc, char** argv)
{
    const QApplication application(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false);
    QMenu menu;
    menu.addAction(QStringLiteral("Quit"));
    QSystemTrayIcon icon(QIcon::fromTheme(QStringLiteral("audio-card")));
    icon.setContextMenu(&menu);
    icon.show();
    return QApplication::exec();
}
