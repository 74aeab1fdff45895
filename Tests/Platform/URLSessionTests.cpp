#include "LinuxDesktop/QtTest.h"
#include "LinuxDesktop/URLSession/FetcherURLSession.h"
#include "Platform/Stages.h"
#include "Support/FakePlatform.h"
#include "Support/TemporaryFolder.h"

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace stemvault {
namespace {

// How a server's answer is handled is tested with the real adapter only: the fake has no network.

/// The result of a fetch, and a fetcher that produces this result in the real adapter.
struct Ending {
    const char* what;
    std::string fetcher;
    std::optional<std::string> body; ///< Absent if the fetch fails.
};

struct FakeURLSessionStage {
    static constexpr const char* name = "Fake";

    explicit FakeURLSessionStage(const Ending& chosen) : ending(chosen) { }

    bool happens(const std::function<bool()>& condition)
    {
        while (!condition())
            session.finish(
                ending.body ? Result<std::string>(*ending.body) : Failure { "unreachable" });
        return true;
    }

    const Ending& ending;
    FakeURLSession session;
};

struct FetcherStage {
    static constexpr const char* name = "Fetcher";

    explicit FetcherStage(const Ending& ending)
    {
        if (ending.fetcher.empty())
            return;
        folder.write("fetcher", "#!/bin/sh\n" + ending.fetcher + "\n");
        std::filesystem::permissions(folder.path("fetcher"), std::filesystem::perms::owner_all);
    }

    bool happens(const std::function<bool()>& condition) { return stemvault::happens(condition); }

    TemporaryFolder folder;
    url_session::FetcherURLSession session { folder.path("fetcher"), {} };
};

template <typename Stage> struct URLSessionTests : testing::Test {
};
using URLSessionStages = testing::Types<FakeURLSessionStage, FetcherStage>;
TYPED_TEST_SUITE(URLSessionTests, URLSessionStages, StageNames);

TYPED_TEST(URLSessionTests, EachFetchIsAnsweredOnceAndLaterWithABodyOrAReason)
{
    const Ending rows[] = {
        { "a page", "printf page", "page" },
        { "an empty page", "exit 0", "" },
        { "a failure", "echo unreachable >&2; exit 1", {} },
        { "a failure without a word", "exit 1", {} },
        { "a fetcher that crashes", "kill -9 $$", {} },
        { "no fetcher", "", {} },
    };
    for (const Ending& row : rows) {
        TypeParam stage(row);
        std::vector<Result<std::string>> answers;
        const auto note = [&answers](const Result<std::string>& body) { answers.push_back(body); };
        stage.session.dataTask("https://h/1", note);
        stage.session.dataTask("https://h/2", note);
        EXPECT_TRUE(answers.empty()) << row.what << ": inside the call";
        EXPECT_TRUE(stage.happens([&answers] { return answers.size() == 2; })) << row.what;
        for (const Result<std::string>& answer : answers) {
            ASSERT_EQ(static_cast<bool>(answer), row.body.has_value()) << row.what;
            if (answer)
                EXPECT_EQ(answer.value(), *row.body) << row.what;
            else
                EXPECT_FALSE(answer.error().empty()) << row.what << ": no reason";
        }
    }
}

} // namespace
} // namespace stemvault
