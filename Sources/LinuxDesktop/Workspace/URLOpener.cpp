#include "LinuxDesktop/Workspace/URLOpener.h"

#include <QEventLoop>
#include <QProcess>
#include <QTimer>

#include <unistd.h>

namespace stemvault {

namespace {

enum Outcome { Opened, Failed };

/// Belongs to nobody: it goes when the tool has ended, and what it started outlives us.
QProcess* makeTool(const std::string& url)
{
    auto* tool = new QProcess;
    tool->setProgram(QStringLiteral("xdg-open"));
    tool->setArguments({ QString::fromStdString(url) });
    tool->setStandardInputFile(QProcess::nullDevice());
    tool->setStandardOutputFile(QProcess::nullDevice());
    tool->setStandardErrorFile(QProcess::nullDevice());
    tool->setChildProcessModifier([] { ::setsid(); });
    return tool;
}

Outcome outcomeOf(const QProcess& tool)
{
    const bool succeeded = tool.exitStatus() == QProcess::NormalExit && tool.exitCode() == 0;
    return succeeded ? Opened : Failed;
}

} // namespace

bool openURL(const std::string& url, std::chrono::milliseconds patience)
{
    QEventLoop loop;
    QProcess* tool = makeTool(url);
    QObject::connect(tool, &QProcess::finished, &loop, [&] { loop.exit(outcomeOf(*tool)); });
    QObject::connect(tool, &QProcess::errorOccurred, &loop, [&](QProcess::ProcessError error) {
        if (error == QProcess::FailedToStart)
            loop.exit(Failed);
    });
    QObject::connect(tool, &QProcess::finished, tool, &QObject::deleteLater);
    QObject::connect(tool, &QProcess::errorOccurred, tool, [tool](QProcess::ProcessError error) {
        if (error == QProcess::FailedToStart)
            tool->deleteLater();
    });
    QTimer::singleShot(patience, &loop, [&loop] { loop.exit(Opened); });
    // Queued, as a failure to start is told from within.
    QMetaObject::invokeMethod(
        tool, [tool] { tool->start(); }, Qt::QueuedConnection);
    return loop.exec() == Opened;
}

} // namespace stemvault
