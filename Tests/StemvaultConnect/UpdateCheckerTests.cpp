#include "StemvaultConnect/UpdateChecker.h"
#include "StemvaultConnect/UpdateFeed.h"
#include "Support/FakePlatform.h"

#include <gmock/gmock.h>

#include <utility>

namespace stemvault {
namespace {

using namespace std::chrono_literals;

const std::string lastCheck = "updateChecker_lastCheckDate";
const Alert upToDate { "You're Up to Date", "Stemvault Connect 1.4 is the latest version.",
    AlertStyle::Informational, {}, {}, { "OK" } };
const Alert failed { "Couldn't Check for Updates",
    "Please check your internet connection and try again.", AlertStyle::Warning, {}, {}, { "OK" } };

Alert available(const std::string& notes)
{
    return { "Update Available", "Stemvault Connect 2 is available." + notes,
        AlertStyle::Informational, {}, {}, { "Download", "Later" } };
}

std::string feed(const std::string& entries)
{
    return "<html><pre>{" + entries + "}</pre></html>";
}

std::string entry(const std::string& version, const std::string& more = "")
{
    return R"("stemvault_connect":{"latest_version":")" + version
        + R"(","download_url":"https://dl.example/x")" + more + "}";
}

class UpdateCheckerTests : public testing::Test {
protected:
    /// The alert shown after this answer of the server, which is closed by this button; absent if
    /// there is none.
    std::optional<Alert> alertAfter(const Result<std::string>& body, const std::string& button)
    {
        if (!button.empty())
            platform.dialogs.answer(button);
        platform.urlSession.finish(body);
        platform.dispatch.settle();
        const auto alerts = std::exchange(platform.dialogs.alerts, {});
        return alerts.empty() ? std::nullopt : std::optional(alerts.back());
    }

    FakePlatform platform;
};

TEST_F(UpdateCheckerTests, ComparesVersionsNumberByNumber)
{
    const struct {
        std::string latest, current;
        bool expected;
    } rows[] = {
        { "1.2.10", "1.2.9", true },
        { "1.3", "1.3.0", false },
        { "2.0-beta", "1.9", true },
        { "1.0.1b", "1.0.1", false },
        { "+-2", "0", false },
        { "9223372036854775807", "9223372036854775806", true },
        { "9223372036854775808", "1", false },
    };
    for (const auto& row : rows)
        EXPECT_EQ(isNewer(row.latest, row.current), row.expected)
            << row.latest << " against " << row.current;
}

TEST_F(UpdateCheckerTests, FindsTheFirstBlockOfThePage)
{
    const struct {
        std::string page;
        std::optional<std::string> expected;
    } rows[] = {
        { "<pre>{}</pre>", "{}" },
        { "x<PRE class='a'\n>\n {} \t</Pre>y<pre>z</pre>", "{}" },
        { "<preview>a</preview></pre>", "a</preview>" },
        { "<pre>&quot;&#39;&lt;&gt;&amp;&nbsp;</pre>", "\"'<>&&nbsp;" },
        { "<pre>\u00a0\u2028\u3000{\u00a0}\u0085\r\n</pre>", "{\u00a0}" },
        { std::string(3'000'000, '<') + "<pre>{}</pre>", "{}" },
        { "{}", std::nullopt },
        { "<pre", std::nullopt },
        { "</pre><pre>{}", std::nullopt },
    };
    for (const auto& row : rows)
        EXPECT_EQ(extractJSON(row.page), row.expected) << row.page.substr(0, 80);
}

TEST_F(UpdateCheckerTests, AnswersEveryFeedTheUserAsksFor)
{
    const std::string deep = std::string(1000, '[') + std::string(1000, ']');
    const struct {
        std::string what;
        Result<std::string> body;
        Alert expected;
    } rows[] = {
        { "no connection", Failure { "unreachable" }, failed },
        { "with notes", feed(entry("2", R"(,"notes":"a\n&amp;lt; b","x":[1])")),
            available("\n\na\n&lt; b") },
        { "with empty notes", feed(entry("2", R"(,"notes":"")")), available("") },
        { "equal", feed(entry("1.4.0", R"(,"notes":null)")), upToDate },
        { "behind another entry",
            feed(R"("a":{"latest_version":"3","download_url":""},)" + entry("2")), available("") },
        { "not UTF-8", feed(entry("2\xff")), failed },
        { "an error page", std::string("<h1>404</h1>"), failed },
        { "not JSON", feed(entry("2") + ","), failed },
        { "deeply nested", feed(entry("2", R"(,"x":)" + deep)), failed },
        { "many brackets in a text", feed(entry("1", R"(,"x":"\")" + deep + "\"")), upToDate },
        { "not about this program", feed(R"("x":{"latest_version":"2","download_url":""})"),
            failed },
        { "another entry lacks its URL", feed(entry("2") + R"(,"x":{"latest_version":"1"})"),
            failed },
        { "another entry is no object", feed(entry("2") + R"(,"x":[])"), failed },
        { "a number for a text", feed(entry("2", R"(,"notes":1)")), failed },
        { "a version that is a number",
            feed(R"("stemvault_connect":{"latest_version":2,"download_url":""})"), failed },
    };
    for (const auto& row : rows) {
        UpdateChecker::shared().checkForUpdates();
        EXPECT_EQ(alertAfter(row.body, row.expected.buttons.back()), row.expected) << row.what;
        EXPECT_EQ(platform.dialogs.activationsBefore.size(), platform.application.activations);
        EXPECT_EQ(platform.dialogs.activationsBefore.back(), platform.application.activations)
            << "to the front first";
    }
    EXPECT_TRUE(platform.workspace.opened.empty());
    EXPECT_TRUE(platform.userDefaults.dates.empty())
        << "a check that the user asks for does not count as the daily one";
    EXPECT_THAT(platform.urlSession.urls, testing::Each("https://www.stemvault.example/updates"));
}

TEST_F(UpdateCheckerTests, DownloadOpensWhatIsAURL)
{
    const std::pair<std::string, bool> rows[] = { { "https://dl.example/a%20b?c#d", true },
        { "", false }, { "https://dl.example/a b", false }, { "https://dl.example/%zz", false },
        { "://x", false }, { "https://dl.example/\\n", false } };
    for (const auto& [url, isOpened] : rows) {
        platform.workspace.opened.clear();
        UpdateChecker::shared().checkForUpdates();
        alertAfter(
            feed(R"("stemvault_connect":{"latest_version":"2","download_url":")" + url + "\"}"),
            "Download");
        EXPECT_EQ(platform.workspace.opened.size(), isOpened ? 1U : 0U) << url;
    }
}

TEST_F(UpdateCheckerTests, TheDailyCheckSpeaksOnlyOfAnUpdate)
{
    const Result<std::string> newer = feed(entry("2"));
    platform.bundle.version.reset();
    UpdateChecker::shared().checkForUpdatesIfNeeded();
    EXPECT_EQ(platform.userDefaults.dates.at(lastCheck), platform.dispatch.now())
        << "stored before the answer";
    EXPECT_EQ(alertAfter(newer, "Later"), available("")) << "any version is newer than none";
    platform.bundle.version = "2";

    const struct {
        std::chrono::hours sinceLast;
        bool isFetched;
    } rows[] = { { 23h, false }, { 24h, true }, { 25h, true }, { -1h, false }, { -48h, false } };
    for (const auto& row : rows) {
        platform.urlSession.urls.clear();
        const WallTime before = platform.dispatch.now() - row.sinceLast;
        platform.userDefaults.dates[lastCheck] = before;
        UpdateChecker::shared().checkForUpdatesIfNeeded();
        EXPECT_EQ(platform.urlSession.urls.size(), row.isFetched ? 1U : 0U)
            << row.sinceLast.count();
        EXPECT_EQ(platform.userDefaults.dates[lastCheck],
            row.isFetched ? platform.dispatch.now() : before);
        if (row.isFetched) {
            EXPECT_FALSE(alertAfter(row.sinceLast == 24h ? newer : Failure { "" }, ""));
        }
    }
}

TEST_F(UpdateCheckerTests, ChecksSideBySideEachShowTheirOutcome)
{
    UpdateChecker::shared().checkForUpdatesIfNeeded();
    UpdateChecker::shared().checkForUpdates();
    EXPECT_FALSE(alertAfter(Failure { "" }, ""));
    EXPECT_EQ(alertAfter(Failure { "" }, "OK"), failed);
}

} // namespace
} // namespace stemvault
