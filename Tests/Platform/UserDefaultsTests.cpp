#include "LinuxDesktop/UserDefaults/UserDefaultsFile.h"
#include "Platform/Stages.h"
#include "Support/FakePlatform.h"
#include "Support/TemporaryFolder.h"

#include <chrono>
#include <functional>
#include <optional>

namespace stemvault {
namespace {

using namespace std::chrono_literals;

const std::string key = "key";

struct FakeDefaultsStage {
    static constexpr const char* name = "Fake";

    UserDefaults& defaults() { return fake; }
    void putByHand(const std::string& text) { fake.strings[key] = text; }
    void restart() { } // The fake has no file to load again.

    FakeUserDefaults fake;
};

struct DefaultsFileStage {
    static constexpr const char* name = "File";

    DefaultsFileStage() { open(); }

    UserDefaults& defaults() { return *file; }
    void putByHand(const std::string& text)
    {
        folder.write("connect.json", "{\"" + key + "\": {\"string\": \"" + text + "\"}}");
        open();
    }
    void restart()
    {
        file->synchronize();
        open();
    }

    void open()
    {
        file = std::make_unique<user_defaults::UserDefaultsFile>(
            folder.path("connect.json"), dispatch);
    }

    TemporaryFolder folder;
    FakeDispatch dispatch;
    std::unique_ptr<user_defaults::UserDefaultsFile> file;
};

template <typename Stage> struct UserDefaultsTests : testing::Test {
};
using UserDefaultsStages = testing::Types<FakeDefaultsStage, DefaultsFileStage>;
TYPED_TEST_SUITE(UserDefaultsTests, UserDefaultsStages, StageNames);

TYPED_TEST(UserDefaultsTests, AKeyHoldsTheValueThatWasSetLastAndIsOfOneKind)
{
    const WallTime date { std::chrono::milliseconds(1'709'199'000'125) };
    const WallTime beginning {};
    const std::string withZero("\u00e9\0\n", 4);
    const struct {
        const char* what;
        std::function<void(UserDefaults&)> change;
        std::optional<std::string> data;
        std::optional<WallTime> date;
    } rows[] = {
        { "nothing", [](UserDefaults&) {}, {}, {} },
        { "bytes", [](UserDefaults& defaults) { defaults.setData(key, "a"); }, "a", {} },
        { "no bytes", [](UserDefaults& defaults) { defaults.setData(key, ""); }, "", {} },
        { "bytes with a zero", [&](UserDefaults& defaults) { defaults.setData(key, withZero); },
            withZero, {} },
        { "bytes under another key", [](UserDefaults& defaults) { defaults.setData("other", "a"); },
            {}, {} },
        { "a time", [&](UserDefaults& defaults) { defaults.setDate(key, date); }, {}, date },
        { "a time within a millisecond",
            [&](UserDefaults& defaults) { defaults.setDate(key, date + 999us); }, {}, date },
        { "a time before 1970",
            [&](UserDefaults& defaults) { defaults.setDate(key, beginning - 1us); }, {},
            beginning - 1ms },
        { "other bytes",
            [](UserDefaults& defaults) {
                defaults.setData(key, "a");
                defaults.setData(key, "b");
            },
            "b", {} },
        { "a time instead of bytes",
            [&](UserDefaults& defaults) {
                defaults.setData(key, "a");
                defaults.setDate(key, date);
            },
            {}, date },
        { "bytes instead of a time",
            [&](UserDefaults& defaults) {
                defaults.setDate(key, date);
                defaults.setData(key, "a");
            },
            "a", {} },
    };
    for (const auto& row : rows) {
        TypeParam stage;
        row.change(stage.defaults());
        for (const char* when : { "at once", "after a restart" }) {
            EXPECT_EQ(stage.defaults().data(key), row.data) << row.what << " " << when;
            EXPECT_EQ(stage.defaults().date(key), row.date) << row.what << " " << when;
            EXPECT_EQ(stage.defaults().string(key), std::nullopt) << row.what << " " << when;
            stage.restart();
        }
    }
}

TYPED_TEST(UserDefaultsTests, ATextThatWasPutThereByHandIsNeitherBytesNorATime)
{
    TypeParam stage;
    stage.putByHand("https://h");
    EXPECT_EQ(stage.defaults().string(key), "https://h");
    EXPECT_EQ(stage.defaults().data(key), std::nullopt);
    EXPECT_EQ(stage.defaults().date(key), std::nullopt);
    stage.defaults().setData(key, "a");
    EXPECT_EQ(stage.defaults().string(key), std::nullopt) << "replaced";
}

} // namespace
} // namespace stemvault
