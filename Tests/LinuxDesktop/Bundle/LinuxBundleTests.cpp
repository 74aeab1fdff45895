#include "LinuxDesktop/Bundle/LinuxBundle.h"
#include "Support/TemporaryFolder.h"

#include <gtest/gtest.h>

namespace stemvault::bundle {
namespace {

TEST(LinuxBundleTest, TheApplicationIconIsSharpAtEverySizeAnAlertNeeds)
{
    const LinuxBundle bundle({ "/nowhere", STEMVAULT_RESOURCES });
    const auto path = bundle.pathForResource("AppIcon", "icns");
    ASSERT_TRUE(path);
    const auto image = bundle.imageWithContentsOfFile(*path);
    ASSERT_TRUE(image);
    const QIcon icon = iconFromImage(*image);
    for (const int size : { 16, 32, 64, 128, 256 })
        EXPECT_EQ(icon.actualSize({ size, size }), QSize(size, size));
    EXPECT_EQ(bundle.imageNamed("AppIcon"), image);
    EXPECT_FALSE(bundle.pathForResource("AppIcon", "png"));
    EXPECT_FALSE(bundle.imageNamed("no-such-image"));
}

TEST(LinuxBundleTest, AnImageMayBeAPictureOrBelongToTheDesktop)
{
    const TemporaryFolder folder;
    const TemporaryFolder theme;
    theme.write("hicolor/index.theme", "[Icon Theme]\nName=Own\nDirectories=64\n[64]\nSize=64\n");
    theme.makeFolder("hicolor/64");
    for (const std::string& file :
        { folder.path("picture.svg"), theme.path("hicolor/64/of-desktop.svg") })
        std::filesystem::copy(STEMVAULT_RESOURCES "/Symbols/eye.svg", file);
    QIcon::setThemeSearchPaths({ QString::fromStdString(theme.path()) });
    QIcon::setThemeName("hicolor");
    const LinuxBundle bundle({ folder.path() });
    for (const char* name : { "picture", "of-desktop" }) {
        const auto image = bundle.imageNamed(name);
        ASSERT_TRUE(image) << name;
        EXPECT_FALSE(iconFromImage(*image).pixmap(32, 32).isNull()) << name;
    }
    folder.write("damaged.svg", "<svg");
    EXPECT_FALSE(bundle.imageNamed("damaged"));
    EXPECT_TRUE(iconFromImage({ folder.path("damaged.svg") }).isNull());
}

TEST(LinuxBundleTest, ADamagedContainerHoldsNoImage)
{
    std::ifstream file(STEMVAULT_RESOURCES "/AppIcon.icns", std::ios::binary);
    const std::string whole { std::istreambuf_iterator<char>(file), {} };
    std::string runaway = whole;
    runaway[12] = '\x7F'; // The first image claims to be larger than the file.
    std::string garbled = whole;
    garbled.replace(40, 200, 200, 'x'); // Inside the smallest image.
    const std::pair<const char*, std::string> rows[] = {
        { "only its mark", "icns" },
        { "cut within the first header", whole.substr(0, 12) },
        { "cut within the last image", whole.substr(0, whole.size() - 1) },
        { "an image past the end", runaway },
        { "an image that cannot be decoded", garbled },
        { "another format", "GIF89a" + whole.substr(6) },
    };
    const TemporaryFolder folder;
    const LinuxBundle bundle({ folder.path() });
    for (const auto& [what, content] : rows)
        EXPECT_FALSE(bundle.imageWithContentsOfFile(folder.write("i.icns", content))) << what;
}

} // namespace
} // namespace stemvault::bundle
