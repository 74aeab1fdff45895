#include "LinuxDesktop/Hotkey/DesktopTool.h"

#include <QEventLoop>
#include <QProcess>
#include <QTimer>

#include <chrono>

namespace stemvault {

namespace {

constexpr std::chrono::seconds patience { 3 };

} // namespace

std::optional<QString> outputOf(const QString& program, const QStringList& arguments)
{
    QProcess tool;
    QEventLoop loop;
    QObject::connect(&tool, &QProcess::finished, &loop, &QEventLoop::quit);
    QObject::connect(&tool, &QProcess::errorOccurred, &loop, &QEventLoop::quit);
    QTimer::singleShot(patience, &loop, &QEventLoop::quit);
    tool.setStandardInputFile(QProcess::nullDevice());
    tool.setStandardErrorFile(QProcess::nullDevice());
    // Queued, as a failure to start is told from within.
    QMetaObject::invokeMethod(
        &tool, [&] { tool.start(program, arguments); }, Qt::QueuedConnection);
    loop.exec();
    if (tool.state() != QProcess::NotRunning) {
        tool.kill();
        tool.waitForFinished(1000);
        return std::nullopt;
    }
    if (tool.error() != QProcess::UnknownError || tool.exitStatus() != QProcess::NormalExit
        || tool.exitCode() != 0)
        return std::nullopt;
    return QString::fromUtf8(tool.readAllStandardOutput()).trimmed();
}

} // namespace stemvault
