#include "LinuxDesktop/LoginItem/AutostartEntry.h"
#include "Platform/Stages.h"
#include "Support/FakePlatform.h"
#include "Support/TemporaryFolder.h"

#include <functional>

namespace stemvault {
namespace {

struct FakeLoginItemStage {
    static constexpr const char* name = "Fake";

    void switchOffInTheDesktop() { item.current = LoginItemStatus::NotRegistered; }
    void refuse() { item.isRefused = true; }

    FakeLoginItem item;
};

struct AutostartStage {
    static constexpr const char* name = "Autostart";

    void switchOffInTheDesktop() const
    {
        folder.write("autostart/net.stemvault.Connect.desktop", "[Desktop Entry]\nHidden=true\n");
    }
    void refuse() const { folder.write("autostart", "A file in the place of the folder."); }

    TemporaryFolder folder;
    login_item::AutostartEntry item { folder.path("autostart"), "/usr/bin/stemvault-connect" };
};

template <typename Stage> struct LoginItemTests : testing::Test {
};
using LoginItemStages = testing::Types<FakeLoginItemStage, AutostartStage>;
TYPED_TEST_SUITE(LoginItemTests, LoginItemStages, StageNames);

TYPED_TEST(LoginItemTests, TheStatusIsWhatWasDoneLast)
{
    enum Step { Register, Unregister, SwitchOffInTheDesktop };
    const struct {
        const char* what;
        std::vector<Step> steps;
        LoginItemStatus expected;
    } rows[] = {
        { "at first", {}, LoginItemStatus::NotRegistered },
        { "registered", { Register }, LoginItemStatus::Enabled },
        { "registered twice", { Register, Register }, LoginItemStatus::Enabled },
        { "unregistered", { Register, Unregister }, LoginItemStatus::NotRegistered },
        { "unregistered without need", { Unregister }, LoginItemStatus::NotRegistered },
        { "switched off in the desktop's settings", { Register, SwitchOffInTheDesktop },
            LoginItemStatus::NotRegistered },
        { "registered after that", { Register, SwitchOffInTheDesktop, Register },
            LoginItemStatus::Enabled },
    };
    for (const auto& row : rows) {
        TypeParam stage;
        for (const Step step : row.steps)
            if (step == SwitchOffInTheDesktop)
                stage.switchOffInTheDesktop();
            else
                EXPECT_TRUE(
                    step == Register ? stage.item.registerItem() : stage.item.unregisterItem())
                    << row.what;
        EXPECT_EQ(stage.item.status(), row.expected) << row.what;
    }
}

TYPED_TEST(LoginItemTests, ARefusalHasAReasonAndChangesNothing)
{
    TypeParam stage;
    stage.refuse();
    const Result<void> registered = stage.item.registerItem();
    ASSERT_FALSE(registered);
    EXPECT_FALSE(registered.error().empty());
    EXPECT_EQ(stage.item.status(), LoginItemStatus::NotRegistered);
}

} // namespace
} // namespace stemvault
