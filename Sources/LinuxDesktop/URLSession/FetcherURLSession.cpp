#include "LinuxDesktop/URLSession/FetcherURLSession.h"

#include <QCoreApplication>
#include <QFile>
#include <QProcess>
#include <QTimer>

#include <utility>

namespace stemvault::url_session {

namespace {

// The time for starting the process, in addition to the time limit of the request.
constexpr std::chrono::seconds grace { 10 };

Result<std::string> resultOf(QProcess& process)
{
    const bool hasEnded =
        process.error() == QProcess::UnknownError && process.exitStatus() == QProcess::NormalExit;
    if (hasEnded && process.exitCode() == 0)
        return process.readAllStandardOutput().toStdString();
    // A fetcher that is missing or was killed has printed nothing.
    const QByteArray printed = process.readAllStandardError().trimmed();
    return Failure { printed.isEmpty() ? process.errorString().toStdString()
                                       : printed.toStdString() };
}

} // namespace

FetcherURLSession::FetcherURLSession(std::string fetcherPath, Limits limits)
    : fetcher(std::move(fetcherPath)), limit(limits)
{
}

FetcherURLSession::~FetcherURLSession()
{
    for (auto* process : findChildren<QProcess*>()) {
        process->disconnect();
        process->kill();
        process->waitForFinished(1000);
    }
}

// The folder of an installed executable also holds other programs, so a fetcher there comes last.
std::string FetcherURLSession::fetcherOf(const QString& folderOfExecutable)
{
    for (const char* place : { "/../libexec/stemvault-connect/fetcher", "/fetcher" })
        if (const QString path = folderOfExecutable + QLatin1String(place); QFile::exists(path))
            return QFile::encodeName(path).toStdString();
    return {};
}

std::string FetcherURLSession::standardFetcher()
{
    return fetcherOf(QCoreApplication::applicationDirPath());
}

void FetcherURLSession::dataTask(const std::string& url, CompletionHandler completionHandler)
{
    auto* process = new QProcess(this);
    const auto finished = [process, handler = std::move(completionHandler)] {
        process->deleteLater();
        handler(resultOf(*process));
    };
    connect(process, &QProcess::finished, this, finished);
    connect(process, &QProcess::errorOccurred, this, [finished](QProcess::ProcessError error) {
        if (error == QProcess::FailedToStart)
            finished();
    });
    QTimer::singleShot(limit.time + grace, process, &QProcess::kill);
    process->setStandardInputFile(QProcess::nullDevice());
    process->setProgram(QFile::decodeName(fetcher.c_str()));
    process->setArguments({ QString::fromStdString(url), QString::number(limit.time.count()),
        QString::number(limit.bytes) });
    // Queued, because a failure to start would otherwise call the handler from within this call.
    QMetaObject::invokeMethod(
        process, [process] { process->start(); }, Qt::QueuedConnection);
}

} // namespace stemvault::url_session
