#include "LinuxDesktop/Application/DesktopTheme.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

namespace stemvault::application {
namespace {

std::string number(std::uint64_t value, std::size_t size)
{
    std::string bytes;
    for (std::size_t i = 0; i < size; ++i)
        bytes += static_cast<char>(value >> (8 * i) & 0xFF);
    return bytes;
}

std::string padded(std::string text)
{
    text.resize((text.size() + 3) / 4 * 4);
    return text;
}

std::string setting(char type, const std::string& name, const std::string& value)
{
    return std::string { type, '\0' } + number(name.size(), 2) + padded(name) + number(1, 4)
        + value;
}

std::string textSetting(const std::string& name, const std::string& value)
{
    return setting(1, name, number(value.size(), 4) + padded(value));
}

std::string settings(const std::vector<std::string>& all)
{
    std::string whole = number(0, 4) + number(7, 4) + number(all.size(), 4);
    for (const std::string& one : all)
        whole += one;
    return whole;
}

TEST(DesktopThemeTests, TheThemeIsFoundAmongAllKindsOfSettings)
{
    const std::string whole = settings({ setting(0, "Net/DoubleClickTime", number(400, 4)),
        setting(2, "Xft/Color", number(0, 8)), textSetting("Net/IconThemeName", "Papirus"),
        textSetting("Net/ThemeName", "Adwaita-dark") });
    EXPECT_EQ(themeOfXSettings(whole), "Adwaita-dark");
    for (std::size_t size = 0; size < whole.size(); ++size)
        EXPECT_FALSE(themeOfXSettings(std::string_view(whole).substr(0, size)))
            << "cut at " << size;
    EXPECT_FALSE(themeOfXSettings(settings({})));
    EXPECT_FALSE(themeOfXSettings(number(0, 8) + number(0xFFFFFFFF, 4))) << "a count that is a lie";
    EXPECT_FALSE(
        themeOfXSettings(settings({ setting(1, "Net/ThemeName", number(0xFFFFFFFF, 4)) })));

    std::string foreign = { 1, 0, 0, 0, 0, 0, 0, 7, 0, 0, 0, 1, 1, 0, 0, 13 };
    foreign += padded("Net/ThemeName") + std::string { 0, 0, 0, 1, 0, 0, 0, 2 } + padded("Hi");
    EXPECT_EQ(themeOfXSettings(foreign), "Hi") << "the most significant byte first";
}

TEST(DesktopThemeTests, ADarkThemeSaysSoInItsName)
{
    for (const char* name : { "Adwaita-dark", "Arc-Dark", "Mint-Y-Dark-Aqua", "Adwaita:dark" })
        EXPECT_TRUE(isDarkTheme(name)) << name;
    for (const char* name : { "Adwaita", "", "Arc-Darker", "Endarkened" })
        EXPECT_FALSE(isDarkTheme(name)) << name;
}

} // namespace
} // namespace stemvault::application
