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
#include <cstdlib>
#include <fstream>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <unistd.h>

namespace {

// Response headers are kept in memory by the library, however many there are.
constexpr rlim_t maxMemory = 128 << 20; ///< On top of what a start takes.
constexpr int maxRedirects = 20;

int fail(const QString& reason)
{
    std::fprintf(stderr, "%s\n", qPrintable(reason));
    return 1;
}

/// The process dies when it needs more, and leaves no dump of it.
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

/// One page, from wherever it has moved to.
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

    void giveUp() { reply->abort(); }

    [[nodiscard]] QString failure() const
    {
        if (body.size() > maxBytes)
            return QStringLiteral("larger than any page");
        if (isUnsafe)
            return QStringLiteral("redirected to another kind of address");
        if (redirects > maxRedirects)
            return QStringLiteral("redirected too often");
        return isWhole() ? QString() : reply->errorString();
    }

    [[nodiscard]] const QByteArray& page() const { return body; }

private:
    // By hand, as the library takes a redirect that leads nowhere for an error.
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
            giveUp();
    }

    void follow()
    {
        read();
        const QUrl target = reply->attribute(QNetworkRequest::RedirectionTargetAttribute).toUrl();
        if (target.isEmpty() || !isWhole())
            return QCoreApplication::quit();
        const QUrl next = reply->url().resolved(target);
        isUnsafe =
            next.scheme() != QLatin1String("https") && next.scheme() != reply->url().scheme();
        if (isUnsafe || ++redirects > maxRedirects)
            return QCoreApplication::quit();
        reply->deleteLater();
        get(next);
    }

    // Statuses such as "not found" are errors to the library; to us they are pages.
    [[nodiscard]] bool isWhole() const
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
    QTimer::singleShot(arguments[2].toInt(), &application, [&fetch] { fetch.giveUp(); });
    fetch.get(QUrl(arguments[1], QUrl::StrictMode));
    QCoreApplication::exec();
    if (const QString failure = fetch.failure(); !failure.isEmpty())
        return fail(failure);
    const bool isWritten = write(fetch.page());
    // At an ordinary end the encryption library is taken down while the network's thread may still
    // be on its way out, and a page that came whole could end in a failure.
    std::_Exit(isWritten ? 0 : 1);
}
