#include "LinuxDesktop/Windows/SymbolImage.h"

#include <QImage>
#include <gtest/gtest.h>

namespace stemvault::windows {
namespace {

/// The painted share of a picture, from 0 to 1. Every painted pixel must have the colour `ink`.
double inked(const QImage& picture, const QColor& ink)
{
    int count = 0;
    for (int y = 0; y < picture.height(); ++y)
        for (int x = 0; x < picture.width(); ++x) {
            const QColor pixel = picture.pixelColor(x, y);
            if (pixel.alpha() < 200)
                continue;
            ++count;
            EXPECT_NEAR(pixel.red(), ink.red(), 3);
            EXPECT_NEAR(pixel.blue(), ink.blue(), 3);
        }
    return static_cast<double>(count) / picture.width() / picture.height();
}

TEST(SymbolImageTests, EverySymbolIsDrawnInTheColourThatIsAskedFor)
{
    setSymbolFolder(STEMVAULT_RESOURCES "/Symbols");
    const QColor ink(200, 40, 90);
    for (const char* name :
        { "checkmark.circle.fill", "circle.dashed", "eye", "folder.badge.gearshape", "folder.fill",
            "folder.fill.badge.plus", "folder.fill.badge.questionmark", "keyboard", "minus.circle",
            "waveform", "waveform.circle" })
        for (const double ratio : { 1.0, 1.5, 2.0 }) {
            const QImage picture = symbolPixmap(name, 18, ratio, ink).toImage();
            ASSERT_FALSE(picture.isNull()) << name << " was not drawn";
            EXPECT_EQ(picture.width(), qRound(18 * ratio)) << name;
            EXPECT_GT(inked(picture, ink), 0.02) << name << " is empty";
        }
    EXPECT_TRUE(symbolPixmap("no such symbol", 18, 1, ink).isNull());
}

} // namespace
} // namespace stemvault::windows
