#include "LinuxDesktop/QtTest.h"
#include "LinuxDesktop/URLSession/FetcherURLSession.h"
#include "Support/TemporaryFolder.h"

#include <QProcess>
#include <QTcpServer>
#include <QTcpSocket>

#include <cstdlib>
#include <fstream>

namespace stemvault::url_session {
namespace {

constexpr FetcherURLSession::Limits limits { 2s, 100'000 };

/// Answers a request with the bytes stored for its path, then closes the connection, unless they
/// end with "stay" or there are none.
struct Server : QTcpServer {
    std::map<QByteArray, QByteArray> answers;

    Server()
    {
        connect(this, &QTcpServer::newConnection, this, [this] {
            QTcpSocket* socket = nextPendingConnection();
            connect(socket, &QTcpSocket::readyRead, this, [this, socket] {
                const QByteArray path = socket->readAll().split(' ').value(1);
                const QByteArray answer = answers[path];
                socket->write(answer);
                if (!answer.isEmpty() && !answer.endsWith("stay"))
                    socket->disconnectFromHost();
            });
        });
        listen(QHostAddress::LocalHost);
    }
    [[nodiscard]] std::string url(const std::string& path) const
    {
        return "http://127.0.0.1:" + std::to_string(serverPort()) + path;
    }
};

/// The body, or "failed".
std::string fetched(const std::string& url, const std::string& fetcher = STEMVAULT_FETCHER)
{
    FetcherURLSession session(fetcher, limits);
    std::optional<std::string> outcome;
    session.dataTask(url,
        [&outcome](const Result<std::string>& body) { outcome = body ? body.value() : "failed"; });
    EXPECT_FALSE(outcome) << "never from within the call";
    EXPECT_TRUE(happens([&outcome] { return outcome.has_value(); })) << url;
    return outcome.value_or("no answer");
}

TEST(FetcherURLSessionTests, GivesWhatCameWholeAndFailsOtherwise)
{
    Server server;
    const std::string large(200'000, 'x');
    const struct {
        const char* what;
        std::string answer, expected;
    } rows[] = {
        { "a page", "HTTP/1.1 200 OK\r\nContent-Length: 4\r\n\r\npage", "page" },
        { "an error page", "HTTP/1.1 404 Not Found\r\nContent-Length: 4\r\n\r\ngone", "gone" },
        { "a server in trouble", "HTTP/1.1 503 Busy\r\nContent-Length: 4\r\n\r\nwait", "wait" },
        { "a bad request", "HTTP/1.1 400 Bad\r\nContent-Length: 3\r\n\r\nbad", "bad" },
        { "a proxy's password wanted", "HTTP/1.1 407 No\r\nContent-Length: 4\r\n\r\nwho?", "who?" },
        { "a teapot", "HTTP/1.1 418 Teapot\r\nContent-Length: 3\r\n\r\ntea", "tea" },
        { "a redirect to nowhere", "HTTP/1.1 307 Moved\r\nContent-Length: 4\r\n\r\nlost", "lost" },
        { "a redirect to a file", "HTTP/1.1 302 Found\r\nLocation: file:///etc/passwd\r\n\r\n",
            "failed" },
        { "a truncated error page", "HTTP/1.1 404 Not Found\r\nContent-Length: 40\r\n\r\ngone",
            "failed" },
        { "an empty page", "HTTP/1.1 200 OK\r\nContent-Length: 0\r\n\r\n", "" },
        { "a redirect", "HTTP/1.1 302 Found\r\nLocation: /0\r\nContent-Length: 0\r\n\r\n", "page" },
        { "a redirect to itself",
            "HTTP/1.1 302 Found\r\nLocation: /self\r\nContent-Length: 0\r\n\r\n", "failed" },
        { "a truncated page", "HTTP/1.1 200 OK\r\nContent-Length: 40\r\n\r\npage", "failed" },
        { "no answer at all", "", "failed" },
        { "a close before the end of the head", "HTTP/1.1 200 OK\r\nCont", "failed" },
        { "no HTTP", "220 mail.example ready\r\n", "failed" },
        { "a stall in the middle", "HTTP/1.1 200 OK\r\nContent-Length: 40\r\n\r\nstay", "failed" },
        { "a page beyond the limit", "HTTP/1.1 200 OK\r\n\r\n" + large, "failed" },
        { "an endless page", "HTTP/1.1 200 OK\r\n\r\n" + large + "stay", "failed" },
    };
    for (std::size_t i = 0; i < std::size(rows); ++i)
        server.answers[QByteArray("/") + QByteArray::number(i)] =
            QByteArray::fromStdString(rows[i].answer);
    server.answers["/self"] = "HTTP/1.1 302 Found\r\nLocation: /self\r\nContent-Length: 0\r\n\r\n";
    for (std::size_t i = 0; i < std::size(rows); ++i)
        EXPECT_EQ(fetched(server.url("/" + std::to_string(i))), rows[i].expected) << rows[i].what;
    server.close();
    for (const std::string& url : { server.url("/"), std::string("https://no.such.host.invalid/"),
             std::string("not a URL"), std::string() })
        EXPECT_EQ(fetched(url), "failed") << url;
    EXPECT_EQ(fetched("http://127.0.0.1/", "/no/such/fetcher"), "failed");
}

/// The number after a name in a file of /proc, times `unit`; 0 if the name is missing.
std::int64_t bytes(const std::string& file, const std::string& name, std::int64_t unit)
{
    std::ifstream lines(file);
    for (std::string line; std::getline(lines, line);)
        if (line.starts_with(name))
            return std::strtoll(line.c_str() + name.size(), nullptr, 10) * unit;
    return 0;
}

TEST(FetcherURLSessionTests, ResponseHeadersCannotFillTheMemory)
{
    Server server;
    server.answers["/"] = "HTTP/1.1 200 OK\r\nX-Endless: stay";
    FetcherURLSession session(STEMVAULT_FETCHER, { 60s, 100'000 });
    session.dataTask(server.url("/"), [](const Result<std::string>&) { FAIL(); });
    const auto* process = session.findChild<QProcess*>();
    ASSERT_TRUE(process);
    std::int64_t limit = 0;
    const auto folder = [process] { return "/proc/" + std::to_string(process->processId()); };
    EXPECT_TRUE(happens([&] {
        limit = bytes(folder() + "/limits", "Max data size", 1);
        return limit > 0;
    })) << "it may take all there is";
    EXPECT_LT(limit - bytes(folder() + "/status", "VmData:", 1024), 200 << 20);
}

TEST(FetcherURLSessionTests, AStrangerBesideTheInstalledExecutableIsNotTheFetcher)
{
    const TemporaryFolder prefix;
    prefix.write("bin/fetcher", "");
    const QString folder = QString::fromStdString(prefix.path("bin"));
    EXPECT_EQ(FetcherURLSession::fetcherOf(folder + "/none"), "");
    EXPECT_EQ(FetcherURLSession::fetcherOf(folder), prefix.path("bin/fetcher")) << "a build tree";
    prefix.write("libexec/stemvault-connect/fetcher", "");
    EXPECT_EQ(FetcherURLSession::fetcherOf(folder),
        prefix.path("bin/../libexec/stemvault-connect/fetcher"));
}

TEST(FetcherURLSessionTests, TheExecutableSaysHowToUseIt)
{
    QProcess fetcher;
    fetcher.start(STEMVAULT_FETCHER, { "http://127.0.0.1" });
    ASSERT_TRUE(fetcher.waitForFinished());
    EXPECT_EQ(fetcher.exitCode(), 1);
    const QByteArray said = fetcher.readAllStandardError();
    EXPECT_TRUE(said.endsWith("usage: fetcher URL MILLISECONDS BYTES\n")) << said.toStdString();
}

void openSSL(const QStringList& arguments)
{
    ASSERT_EQ(QProcess::execute("openssl", arguments), 0) << arguments.join(' ').toStdString();
}

TEST(FetcherURLSessionTests, ACertificateMustBeOneThatTheSystemVouchesFor)
{
    const TemporaryFolder folder;
    const auto path = [&](const char* name) { return QString::fromStdString(folder.path(name)); };
    const std::string trusted = folder.makeFolder("trusted");
    folder.write("page", "HTTP/1.1 200 OK\r\nContent-Length: 4\r\n\r\npage");
    openSSL({ "req", "-x509", "-newkey", "rsa:2048", "-nodes", "-subj", "/CN=a", "-addext",
        "subjectAltName=IP:127.0.0.1", "-keyout", path("key"), "-out", path("trusted/own.pem") });
    openSSL({ "rehash", path("trusted") });
    // The fetcher on a system that trusts only this certificate.
    const std::string fetcher = folder.write("fetcher",
        "#!/bin/sh\nexec unshare -rm sh -c 'mount --bind " + trusted
            + " /etc/ssl/certs && exec \"" STEMVAULT_FETCHER "\" \"$@\"' fetcher \"$@\"\n");
    std::filesystem::permissions(fetcher, std::filesystem::perms::owner_all);

    QProcess server;
    server.setWorkingDirectory(QString::fromStdString(folder.path()));
    server.start("openssl",
        { "s_server", "-accept", "127.0.0.1:0", "-key", "key", "-cert", "trusted/own.pem",
            "-HTTP" });
    QByteArray said;
    ASSERT_TRUE(happens([&] { return (said += server.readAll()).contains("ACCEPT 127"); }))
        << said.toStdString();
    const std::string url = "https://127.0.0.1:"
        + said.mid(said.indexOf("ACCEPT")).split('\n').front().split(':').back().toStdString()
        + "/page";
    EXPECT_EQ(fetched(url), "failed") << "nobody vouches for it";
    const bool isAllowed = QProcess::execute("unshare", { "-rm", "true" }) == 0;
    if (isAllowed) {
        EXPECT_EQ(fetched(url, fetcher), "page");
    }
    EXPECT_EQ(server.state(), QProcess::Running) << "it was there to be asked";
    server.kill();
    server.waitForFinished();
    if (!isAllowed)
        GTEST_SKIP() << "mounting another certificate over the system's own is not permitted";
}

} // namespace
} // namespace stemvault::url_session
