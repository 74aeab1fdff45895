#include "Foundation/NotificationCenter.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace stemvault {
namespace {

using testing::ElementsAre;

TEST(NotificationCenter, CallsWhoObservesTheName)
{
    NotificationCenter center;
    std::vector<std::string> heard;
    const int first = 0;
    const int second = 0;
    center.addObserver(&first, "bounceAdded", [&](const Notification& notice) {
        heard.push_back("first " + notice.userInfo.at("file"));
    });
    center.addObserver(&second, "bounceAdded", [&](const Notification&) {
        heard.emplace_back("second");
        center.removeObserver(&second);
        center.post({ "openPreferences", {} });
    });
    center.addObserver(
        &first, "openPreferences", [&](const Notification&) { heard.emplace_back("open"); });

    center.post({ "bounceAdded", { { "file", "Mix.wav" } } });
    EXPECT_THAT(heard, ElementsAre("first Mix.wav", "second", "open"));
    center.post({ "bounceAdded", { { "file", "B.wav" } } });
    EXPECT_EQ(heard.back(), "first B.wav");
    center.removeObserver(&first);
    center.post({ "openPreferences", {} });
    EXPECT_EQ(heard.size(), 4U);
}

} // namespace
} // namespace stemvault
