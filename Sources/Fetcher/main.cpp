// Fetches one page from the web and writes its body to standard output.
//
//   fetcher URL MILLISECONDS BYTES
//
// Exits with 0 when the whole body was received within that time and size, whatever the status of
// the response; otherwise with 1 and a reason on standard error. This is a separate process, so
// that the memory and threads that the web needs, and any damage by a hostile server, end with it.

#include <QCoreApplication>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QTimer>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <unistd.h>

namespace {

// Qt keeps all response headers in memory, however many there are.
constexpr rlim_t maxMemory = 128 << 20; ///< In addition to what the process uses at its start.
constexpr int maxRedirects = 20;

int fail(const QString& reason)
{
    std::fprintf(stderr, "%s\n", qPrintable(reason));
    return 1;
}

/// The process ends if it needs more memory, and leaves no core dump.
void limitMemory()
{
    std::ifstream pages("/proc/self/statm");
    rlim_t size = 0;
    rlim_t resident = 0;
    rlim_t shared = 0;
    rlim_t text = 0;
    rlim_t unused = 0;
    rlim_t data = 0;
    if (!(pages >> size >> resident >> shared >> text >> unused >> data))
        return;
    const rlim_t most = data * static_cast<rlim_t>(::sysconf(_SC_PAGESIZE)) + maxMemory;
    const rlimit memory { most, most };
    ::setrlimit(RLIMIT_DATA, &memory);
    const rlimit noDump { 0, 0 };
    ::setrlimit(RLIMIT_CORE, &noDump);
}

/// Fetches one page, following its redirects.
class Fetch {
public:
    Fetch(qint64 limit, QObject& owner) : maxBytes(limit), context(owner) { }

    void get(const QUrl& url)
    {
        reply = manager.get(request(url));
        body.clear();
        QObject::connect(reply, &QIODevice::readyRead, &context, [this] { read(); });
        QObject::connect(
            reply, &QNetworkReply::finished, &context, [this] { follow(); }, Qt::QueuedConnection);
    }

    void abort() { reply->abort(); }

    [[nodiscard]] QString failure() const
    {
        if (body.size() > maxBytes)
            return QStringLiteral("larger than any page");
        if (isUnsafe)
            return QStringLiteral("redirected to another kind of address");
        if (redirects > maxRedirects)
            return QStringLiteral("redirected too often");
        return isComplete() ? QString() : reply->errorString();
    }

    [[nodiscard]] const QByteArray& page() const { return body; }

private:
    // Redirects are followed by hand, because Qt treats a redirect without a target as an error.
    static QNetworkRequest request(const QUrl& url)
    {
        QNetworkRequest request(url);
        request.setAttribute(
            QNetworkRequest::RedirectPolicyAttribute, QNetworkRequest::ManualRedirectPolicy);
        return request;
    }

    void read()
    {
        if (reply->isOpen())
            body += reply->readAll();
        if (body.size() > maxBytes)
            abort();
    }

    void follow()
    {
        read();
        const QUrl target = reply->attribute(QNetworkRequest::RedirectionTargetAttribute).toUrl();
        if (target.isEmpty() || !isComplete())
            return QCoreApplication::quit();
        const QUrl next = reply->url().resolved(target);
        isUnsafe =
            next.scheme() != QLatin1String("https") && next.scheme() != reply->url().scheme();
        if (isUnsafe || ++redirects > maxRedirects)
            return QCoreApplication::quit();
        reply->deleteLater();
        get(next);
    }

    // Qt treats statuses such as "not found" as errors; to us their bodies are pages.
    [[nodiscard]] bool isComplete() const
    {
        const int error = reply->error();
        if (error == QNetworkReply::NoError)
            return true;
        const bool isStatus = error == QNetworkReply::ProxyAuthenticationRequiredError
            || error == QNetworkReply::ProtocolInvalidOperationError
            || (error >= QNetworkReply::ContentAccessDenied
                && error <= QNetworkReply::UnknownContentError)
            || (error >= QNetworkReply::InternalServerError
                && error <= QNetworkReply::UnknownServerError);
        const int status = reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
        return isStatus && status >= 400;
    }

    QNetworkAccessManager manager;
    QNetworkReply* reply = nullptr;
    QByteArray body;
    qint64 maxBytes;
    int redirects = 0;
    bool isUnsafe = false;
    QObject& context;
};

bool write(const QByteArray& page)
{
    const auto size = static_cast<std::size_t>(page.size());
    return std::fwrite(page.constData(), 1, size, stdout) == size && std::fflush(stdout) == 0;
}

} // namespace

int main(int argc, char** argv)
{
    ::prctl(PR_SET_PDEATHSIG, SIGTERM);
    QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.size() != 4)
        return fail(QStringLiteral("usage: fetcher URL MILLISECONDS BYTES"));
    limitMemory();
    Fetch fetch(arguments[3].toLongLong(), application);
    QTimer::singleShot(arguments[2].toInt(), &application, [&fetch] { fetch.abort(); });
    fetch.get(QUrl(arguments[1], QUrl::StrictMode));
    QCoreApplication::exec();
    if (const QString failure = fetch.failure(); !failure.isEmpty())
        return fail(failure);
    const bool isWritten = write(fetch.page());
    // A normal exit cleans up the TLS library while the network thread may still be ending, so that
    // the process could fail after it has received the whole page.
    std::_Exit(isWritten ? 0 : 1);
}
