#include "LinuxDesktop/Workspace/URLOpener.h"

#include <QEventLoop>
#include <QProcess>
#include <QTimer>

#include <set>
#include <unistd.h>

namespace stemvault::workspace {

namespace {

enum Outcome { Opened, Failed };

/// The tools that still run. They are not destroyed before they have ended, not even when this
/// program ends, because that would kill the browser that a tool may have become.
std::set<QProcess*>& runningTools()
{
    static auto* const tools = new std::set<QProcess*>;
    return *tools;
}

void forget(QProcess* tool)
{
    runningTools().erase(tool);
    tool->deleteLater();
}

QProcess* makeTool(const std::string& url)
{
    auto* tool = new QProcess;
    runningTools().insert(tool);
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

bool openURL(const std::string& url, std::chrono::milliseconds timeout)
{
    QEventLoop loop;
    QProcess* tool = makeTool(url);
    QObject::connect(tool, &QProcess::finished, &loop, [&] { loop.exit(outcomeOf(*tool)); });
    QObject::connect(tool, &QProcess::errorOccurred, &loop, [&](QProcess::ProcessError error) {
        if (error == QProcess::FailedToStart)
            loop.exit(Failed);
    });
    QObject::connect(tool, &QProcess::finished, tool, [tool] { forget(tool); });
    QObject::connect(tool, &QProcess::errorOccurred, tool, [tool](QProcess::ProcessError error) {
        if (error == QProcess::FailedToStart)
            forget(tool);
    });
    QTimer::singleShot(timeout, &loop, [&loop] { loop.exit(Opened); });
    // Queued, because `start` may signal a failure before it returns, when no loop would run yet.
    QMetaObject::invokeMethod(
        tool, [tool] { tool->start(); }, Qt::QueuedConnection);
    return loop.exec() == Opened;
}

} // namespace stemvault::workspace
