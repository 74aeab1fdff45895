// Fetches one page from the web and writes its body to standard output.
//
//   fetcher URL MILLISECONDS BYTES
//
// Exits with 0 when the body came whole, within that time and size, whatever the status of the
// response; with 1 and a reason on standard error otherwise. A process of its own: what the web
// needs in memory and threads, and what a hostile server may do to it, ends with it.

#include <QCoreApplication>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QTimer>

#include <csignal>
#include <cstdio>
#include <sys/prctl.h>

namespace {

int fail(const QString& reason)
{
    std::fprintf(stderr, "%s\n", qPrintable(reason));
    return 1;
}

// Answers such as "not found" are errors to the library; to us they are pages.
bool isWhole(const QNetworkReply& reply)
{
    const int error = reply.error();
    return error == QNetworkReply::NoError
        || (error >= QNetworkReply::ContentAccessDenied
            && error <= QNetworkReply::UnknownContentError)
        || (error >= QNetworkReply::InternalServerError
            && error <= QNetworkReply::UnknownServerError);
}

} // namespace

int main(int argc, char** argv)
{
    ::prctl(PR_SET_PDEATHSIG, SIGTERM);
    const QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.size() != 4)
        return fail(QStringLiteral("usage: fetcher URL MILLISECONDS BYTES"));
    const qint64 mostBytes = arguments[3].toLongLong();

    QNetworkAccessManager manager;
    QNetworkReply* reply = manager.get(QNetworkRequest(QUrl(arguments[1], QUrl::StrictMode)));
    QByteArray body;
    QTimer::singleShot(arguments[2].toInt(), reply, &QNetworkReply::abort);
    QObject::connect(reply, &QIODevice::readyRead, reply, [&] {
        body += reply->readAll();
        if (body.size() > mostBytes)
            reply->abort();
    });
    QObject::connect(reply, &QNetworkReply::finished, &application, &QCoreApplication::quit);
    if (!reply->isFinished())
        QCoreApplication::exec();
    body += reply->readAll();
    if (!isWhole(*reply) || body.size() > mostBytes)
        return fail(reply->errorString());
    const auto size = static_cast<std::size_t>(body.size());
    return std::fwrite(body.constData(), 1, size, stdout) == size && std::fflush(stdout) == 0 ? 0
                                                                                              : 1;
}
