#include "FileManager/KilledAt.h"
#include "FileManager/TemporaryItem.h"
#include "LinuxDesktop/UserDefaults/UserDefaultsFile.h"
#include "Support/FakeDispatch.h"
#include "Support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <set>
#include <sys/wait.h>
#include <thread>

namespace stemvault::user_defaults {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

const std::string key = "settingsStore_v1";

class UserDefaultsFileTest : public testing::Test {
protected:
    UserDefaultsFileTest()
    {
        calls.pwrite = [this](auto... arguments) {
            ++writes;
            return ::pwrite(arguments...);
        };
    }

    [[nodiscard]] UserDefaultsFile open() { return { path, dispatch, calls }; }

    [[nodiscard]] std::optional<std::string> stored()
    {
        FakeDispatch another;
        return UserDefaultsFile(path, another).data(key);
    }

    [[nodiscard]] std::set<std::string> names() const { return files.names("stemvault"); }

    void change(UserDefaultsFile& defaults, const std::string& value)
    {
        defaults.setData(key, value);
        dispatch.settle();
    }

    [[nodiscard]] std::string text() const { return files.read("stemvault/connect.json"); }
    void put(const std::string& content) const { files.write("stemvault/connect.json", content); }

    TemporaryFolder files;
    std::string path = files.path("stemvault/connect.json");
    FakeDispatch dispatch;
    SystemCalls calls;
    int writes = 0;
};

TEST_F(UserDefaultsFileTest, ReadsWhatIsUnderItsKind)
{
    const struct {
        const char* what;
        std::string file;
        std::optional<std::string> expected;
    } rows[] = {
        { "text", R"({"settingsStore_v1": {"data": "{\"a\":1}"}})", R"({"a":1})" },
        { "another kind", R"({"settingsStore_v1": {"string": "https://h"}})", std::nullopt },
        { "no kind", R"({"settingsStore_v1": "text"})", std::nullopt },
        { "another key", R"({"other": {"data": "x"}})", std::nullopt },
    };
    EXPECT_EQ(open().string(key), std::nullopt);
    for (const auto& row : rows) {
        put(row.file);
        EXPECT_EQ(open().data(key), row.expected) << row.what;
        EXPECT_EQ(text(), row.file) << row.what;
    }
    EXPECT_THAT(names(), ElementsAre("connect.json"));
    files.write("stemvault/connect.json", R"({"settingsStore_v1": {"string": "https://h"}})");
    EXPECT_EQ(open().string(key), "https://h");
}

TEST_F(UserDefaultsFileTest, ReadsADateInOneForm)
{
    const std::string good = R"("date": "2024-02-29T09:30:00.125Z")";
    put("{\"other\": {" + good + "}}");
    auto defaults = open();
    ASSERT_EQ(defaults.date("other"), WallTime(std::chrono::milliseconds(1'709'199'000'125)));
    defaults.setDate(key, *defaults.date("other"));
    dispatch.settle();
    EXPECT_THAT(text(), HasSubstr(key + "\": {\n    " + good));
    for (const char* bad : { R"("date": "2023-02-29T09:30:00.125Z")", R"("date": "2024-02-29")",
             R"("date": "2024-02-29T24:00:00.000Z")", R"("date": "2024-02-29T09:30:00+01:00")",
             R"("date": "9999-02-28T09:30:00.125Z")", R"("string": "2024-02-29T09:30:00.125Z")" }) {
        put("{\"other\": {" + std::string(bad) + "}}");
        EXPECT_EQ(open().date("other"), std::nullopt) << bad;
    }
}

TEST_F(UserDefaultsFileTest, WritesSeveralChangesOnce)
{
    auto defaults = open();
    const std::string values[] = { "text", "", std::string("\0\n\u00e9", 4) };
    for (const std::string& value : values) {
        writes = 0;
        defaults.setData(key, "first");
        defaults.setData(key, value);
        EXPECT_EQ(defaults.data(key), value);
        dispatch.settle();
        EXPECT_EQ(writes, 1);
        EXPECT_EQ(stored(), value);
        change(defaults, value);
        EXPECT_EQ(writes, 1) << "it is there already";
    }
    using std::filesystem::perms;
    EXPECT_EQ(std::filesystem::status(path).permissions(), perms { 0600 });
    EXPECT_EQ(std::filesystem::status(files.path("stemvault")).permissions(), perms { 0700 });
}

TEST_F(UserDefaultsFileTest, KeepsWhatItDoesNotKnow)
{
    put(R"({"later": {"date": "2026"}, "n": [1.5, null]})");
    auto defaults = open();
    put("torn {");
    change(defaults, "a");
    EXPECT_THAT(text(), HasSubstr("\"date\": \"2026\""));
    EXPECT_EQ(stored(), "a");
}

TEST_F(UserDefaultsFileTest, MovesDamagedFilesAside)
{
    const std::string deep = std::string(100'000, '[') + std::string(100'000, ']');
    for (const std::string& damage : { std::string(), std::string("{\"settings"),
             std::string("[1]"), "{\"deep\":" + deep + "}" }) {
        put(damage);
        EXPECT_EQ(open().data(key), std::nullopt);
        EXPECT_FALSE(std::filesystem::exists(path)) << damage.substr(0, 80);
    }
    ASSERT_EQ(names().size(), 4U) << "none over an earlier one";
    for (const std::string& name : names())
        EXPECT_THAT(name, StartsWith("connect.json.damaged-2"));
}

TEST_F(UserDefaultsFileTest, SparesAFileThatItCannotRead)
{
    files.makeFolder("stemvault/connect.json/inner");
    auto defaults = open();
    change(defaults, "new");
    EXPECT_TRUE(std::filesystem::exists(path + "/inner"));
    EXPECT_EQ(defaults.data(key), "new");
    std::filesystem::remove_all(path);
    const std::string unseen = R"({"settingsStore_v1": {"data": "old"}, "kept": 1})";
    put(unseen);
    change(defaults, "newer");
    EXPECT_EQ(stored(), "newer");
    EXPECT_THAT(text(), HasSubstr("kept"));
    ASSERT_THAT(names(), ElementsAre("connect.json", StartsWith("connect.json.unread-2")));
    EXPECT_EQ(files.read("stemvault/" + *names().rbegin()), unseen);
}

TEST_F(UserDefaultsFileTest, WritesThroughALink)
{
    files.makeFolder("stemvault");
    files.makeFolder("dotfiles");
    std::filesystem::create_symlink("../dotfiles/settings.json", path);
    for (const std::string value : { "made", "changed" }) {
        auto defaults = open();
        change(defaults, value);
        EXPECT_TRUE(std::filesystem::is_symlink(path));
        EXPECT_THAT(files.read("dotfiles/settings.json"), HasSubstr(value));
    }
}

TEST_F(UserDefaultsFileTest, TriesAFailedWriteAgainWithTheNextChange)
{
    bool isFull = false;
    calls.fsync = [&](int file) { return isFull ? errno = ENOSPC, -1 : ::fsync(file); };
    auto defaults = open();
    change(defaults, "old");
    isFull = true;
    change(defaults, "new");
    EXPECT_EQ(stored(), "old");
    EXPECT_EQ(defaults.data(key), "new");
    EXPECT_THAT(names(), ElementsAre("connect.json"));
    isFull = false;
    defaults.setData("other", "x");
    dispatch.settle();
    EXPECT_EQ(stored(), "new");
}

TEST_F(UserDefaultsFileTest, LeavesAFileThatItCannotMoveAsideOrReplace)
{
    const auto refused = [](auto...) { return errno = EROFS, -1; };
    const struct {
        const char* what;
        std::function<void()> refuse;
    } rows[] = {
        { "no new files", [&] { calls.openat = refused; } },
        { "a full disk", [&] { calls.pwrite = [](auto...) { return errno = ENOSPC, -1; }; } },
        { "no other names", [&] { calls.linkat = refused, calls.renameat2 = refused; } },
    };
    for (const auto& row : rows)
        for (const std::string old : { "torn {", R"({"settingsStore_v1": {"data": "old"}})" }) {
            put(old);
            calls = {};
            row.refuse();
            auto defaults = open();
            change(defaults, "new");
            EXPECT_EQ(defaults.data(key), "new");
            const bool isMovedAside = old == "torn {" && std::string(row.what) != "no other names";
            EXPECT_EQ(text(), isMovedAside ? "" : old) << row.what;
        }
}

TEST_F(UserDefaultsFileTest, MakesTheFoldersThatItNeeds)
{
    path = files.path("home/.config/stemvault/connect.json");
    auto defaults = open();
    files.write("home", "in the way");
    change(defaults, "early");
    EXPECT_EQ(defaults.data(key), "early");
    EXPECT_EQ(stored(), std::nullopt);
    std::filesystem::remove(files.path("home"));
    change(defaults, "late");
    EXPECT_EQ(stored(), "late");
}

TEST_F(UserDefaultsFileTest, LetsTheLatestStateWin)
{
    auto defaults = open();
    defaults.setData(key, "first");
    dispatch.settleMainQueue();
    defaults.setData(key, "last");
    std::thread underWay([this] { dispatch.runOldestUtilityWork(); });
    defaults.synchronize();
    underWay.join();
    EXPECT_EQ(stored(), "last");
    dispatch.settle();
    EXPECT_EQ(stored(), "last");
    defaults.setData(key, "under way");
    dispatch.settleMainQueue();
    change(defaults, "meanwhile");
    EXPECT_EQ(stored(), "meanwhile");
    {
        auto gone = open();
        gone.setData(key, "of one that is gone");
        dispatch.settleMainQueue();
    }
    dispatch.settle();
    EXPECT_EQ(stored(), "of one that is gone") << "what was under way is finished";
}

TEST_F(UserDefaultsFileTest, LeavesAWholeRecordWhenKilled)
{
    // Other processes see written data before it reaches the disk, so fsync makes no difference.
    calls.fsync = [](int) { return 0; };
    const auto version = [](int step) { return std::to_string(step) + std::string(20'000, 'x'); };
    const auto save = [&](int step) {
        auto defaults = open();
        defaults.setData(key, version(step));
        defaults.synchronize();
    };
    const auto found = [&] {
        for (const std::string& name : names())
            EXPECT_TRUE(name == "connect.json" || isTemporaryName(name)) << name;
        const std::string record = stored().value_or("");
        const int step = std::atoi(record.c_str());
        return record == version(step) ? step : -1;
    };
    EXPECT_GT(expectWholeWhenKilled(100, calls, save, found), 6);
}

} // namespace
} // namespace stemvault::user_defaults
