#include "StemvaultConnect/SettingsStore.h"
#include "Support/FakePlatform.h"

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

namespace stemvault {
namespace {

using nlohmann::json;
using testing::ElementsAre;

const std::string key = "settingsStore_v1";
const std::string idText = "0A1B2C3D-4E5F-4071-8293-A4B5C6D7E8F9";
const std::string oneFolder =
    R"({"id":")" + idText + R"(","name":"Client A","path":"/d/Client A"})";

class SettingsStoreTests : public testing::Test {
protected:
    [[nodiscard]] json stored() { return json::parse(platform.userDefaults.values.at(key)); }

    static StemvaultFolder folder(const std::string& name)
    {
        return { UUID(), name, "/d/" + name };
    }

    FakePlatform platform;
};

TEST_F(SettingsStoreTests, LoadsWhatCanBeReadAndNormalizesIt)
{
    const struct {
        const char* what;
        std::string record;
        json expected;
    } rows[] = {
        { "null means absent; an unknown member is dropped",
            R"({"stemvaultFolders":[],"alwaysWatchPath":null,"theme":{"dark":true}})",
            { { "stemvaultFolders", json::array() } } },
        { "escaped slashes and both paths",
            R"({"projectsRootPath":"\/p\/r","stemvaultFolders":[],"alwaysWatchPath":"/w"})",
            { { "stemvaultFolders", json::array() }, { "alwaysWatchPath", "/w" },
                { "projectsRootPath", "/p/r" } } },
        { "an identifier in lower case and an unknown member",
            R"({"stemvaultFolders":[{"id":"0a1b2c3d-4e5f-4071-8293-a4b5c6d7e8f9","name":"Client A",)"
            R"("path":"/d/Client A","colour":1}]})",
            { { "stemvaultFolders", json::array({ json::parse(oneFolder) }) } } },
    };
    for (const auto& row : rows) {
        FakePlatform desktop;
        desktop.userDefaults.values[key] = row.record;
        static_cast<void>(SettingsStore::shared());
        EXPECT_EQ(json::parse(desktop.userDefaults.values[key]), row.expected) << row.what;
        EXPECT_EQ(desktop.userDefaults.writes, 3) << row.what;
    }
}

TEST_F(SettingsStoreTests, LeavesWhatCannotBeReadUntilTheNextChange)
{
    const std::string folderWithout = R"({"id":")" + idText + R"(","name":"Client A"})";
    const std::string records[] = {
        "no json",
        "[]",
        "{}",
        R"({"stemvaultFolders":[],"alwaysWatchPath":1})",
        R"({"stemvaultFolders":[],"projectsRootPath":["/p"]})",
        R"({"stemvaultFolders":[)" + folderWithout + "]}",
        R"({"stemvaultFolders":["/d/Client A"]})",
        R"({"stemvaultFolders":[)" + oneFolder + R"(,{"id":"x","name":"n","path":"/p"}]})",
        R"({"stemvaultFolders":[{"id":"0A1B2C3D4E5F40718293A4B5C6D7E8F9----","name":"n","path":"/p"}]})",
        "{\"stemvaultFolders\":[],\"alwaysWatchPath\":\"/\xff\"}",
        std::string(200'000, '['),
    };
    for (const std::string& record : records) {
        FakePlatform desktop;
        desktop.userDefaults.values[key] = record;
        EXPECT_TRUE(SettingsStore::shared().stemvaultFolders().empty()) << record.substr(0, 99);
        EXPECT_FALSE(SettingsStore::shared().alwaysWatchPath()) << record.substr(0, 99);
        EXPECT_EQ(desktop.userDefaults.values[key], record);

        SettingsStore::shared().setProjectsRootPath("/p");
        EXPECT_EQ(json::parse(desktop.userDefaults.values[key])["projectsRootPath"], "/p");
    }
}

TEST_F(SettingsStoreTests, EveryAssignmentTellsFirstAndThenWrites)
{
    SettingsStore& settings = SettingsStore::shared();
    std::vector<std::string> seenBefore;
    settings.onWillChange([&] {
        seenBefore.push_back(settings.alwaysWatchPath().value_or("-") + " "
            + settings.projectsRootPath().value_or("-") + " "
            + std::to_string(settings.stemvaultFolders().size()));
    });

    settings.setAlwaysWatchPath("/w");
    EXPECT_EQ(stored()["alwaysWatchPath"], "/w");
    settings.setAlwaysWatchPath("/w");
    settings.setAlwaysWatchPath(std::nullopt);
    EXPECT_FALSE(stored().contains("alwaysWatchPath"));
    settings.setProjectsRootPath("/p");
    settings.addFolder(folder("A"));

    EXPECT_THAT(seenBefore, ElementsAre("- - 0", "/w - 0", "/w - 0", "- - 0", "- /p 0"));
    EXPECT_EQ(platform.userDefaults.writes, 5);
}

TEST_F(SettingsStoreTests, KeepsFoldersInTheirOrderAndRemovesByIdentity)
{
    SettingsStore& settings = SettingsStore::shared();
    const StemvaultFolder a = folder("A"), b = folder("B"), alsoA = folder("A");
    for (const StemvaultFolder& each : { a, b, alsoA, a })
        settings.addFolder(each);
    EXPECT_THAT(settings.stemvaultFolders(), ElementsAre(a, b, alsoA, a));

    settings.removeFolder(a.id);
    EXPECT_THAT(settings.stemvaultFolders(), ElementsAre(b, alsoA));
    settings.removeFolder(UUID());
    EXPECT_THAT(settings.stemvaultFolders(), ElementsAre(b, alsoA));
    EXPECT_EQ(platform.userDefaults.writes, 6);
    EXPECT_EQ(stored()["stemvaultFolders"][0],
        json({ { "id", b.id.uuidString() }, { "name", "B" }, { "path", "/d/B" } }));
}

TEST_F(SettingsStoreTests, WhatCannotBeWrittenStaysInMemory)
{
    SettingsStore::shared().setProjectsRootPath("/p");
    SettingsStore::shared().setAlwaysWatchPath("/w\xff");
    EXPECT_EQ(SettingsStore::shared().alwaysWatchPath(), "/w\xff");
    EXPECT_EQ(
        platform.userDefaults.values.at(key), R"({"projectsRootPath":"/p","stemvaultFolders":[]})");
}

} // namespace
} // namespace stemvault
